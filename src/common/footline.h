#pragma once

#include <QString>
#include <QVector>
#include <QWidget>

#include <functional>

class TextLink;

/// What the foot of the window says, and what can be done about it.
struct FootText
{
    struct Link
    {
        Link() = default;
        Link(const QString& words, const std::function<void()>& action, const QString& hint = QString())
            : caption(words), act(action), tip(hint)
        {
        }

        QString caption;
        std::function<void()> act;
        QString tip;       ///< of an offer
        bool once = false; ///< goes once it is followed
    };

    QString text; ///< one line
    bool failed = false;
    QVector<Link> links;
};

/// One line of text that tells what happened last, and the links behind it. A text that does not fit ends in
/// "..." and is whole in the tool tip; links are always whole. A failure begins with a mark. To those who
/// hear the screen read out it is a status. Paints nothing else of its place, and nothing between two lines.
class FootLine : public QWidget
{
    Q_OBJECT

public:
    explicit FootLine(QWidget* parent = nullptr);

    /// Says this in place of what it said. A link may tell something else while it is clicked.
    void tell(const FootText& told);
    void clear() { tell(FootText()); }
    /// A link that stands behind all others, whatever is told; one without a caption is none.
    void offer(const FootText::Link& link);
    /// Has Tab come here just before it comes to this widget of the window.
    void comeBefore(const QWidget& next);
    /// The whole text.
    const QString& text() const { return m_told.text; }

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void makeLinks();
    void addLink(const FootText::Link& wanted);
    static void drop(TextLink* link);
    QVector<TextLink*> shownLinks() const;
    void place();
    int textLeft() const;

    FootText m_told;
    QString m_shown;            ///< what of the text fits
    QVector<TextLink*> m_links; ///< of what is told
    TextLink* m_offer;          ///< hidden while there is none
    std::function<void()> m_offered;
};
