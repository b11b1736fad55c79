#pragma once

#include <QObject>
#include <QString>

class OverlayButton;
class QComboBox;
class QGridLayout;
class QWidget;
class TextLink;

/// What an apply would change though nobody asked for it, and what the editor of a song therefore offers to
/// keep: the file's own cover, by a button at the lower edge of the cover, and a genre that the box does not
/// show, by a link beside the box.
class KeepOffers : public QObject
{
    Q_OBJECT

public:
    /// Makes button and link beside these, which have to outlive it. The link shares the box's cell.
    KeepOffers(QWidget& cover, QComboBox& genreBox, const QGridLayout& fields);

    /// The editor of a song with this genre opens.
    void begin(const QString& genre);
    /// It closes: nothing is offered any more, and the box has its own items alone.
    void end();
    /// Whether the song has a cover of its own, whether another one is shown in its place, and whether it is
    /// to be kept.
    void offerCover(bool any, bool otherShown, bool kept);
    /// As a click on the link.
    void keepGenre();

signals:
    /// The user wants the song's own cover kept, or not any more.
    void coverKept(bool keep);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void offerGenre();
    void placeGenre();

    QComboBox& m_genreBox;
    const QGridLayout& m_fields;
    const int m_ownGenres;  ///< items that the box has by itself
    int m_formerIndex = -1; ///< what the box showed before an item was added for the song
    QString m_genre;
    bool m_editing = false;
    OverlayButton* m_coverButton;
    TextLink* m_genreLink;
};
