#pragma once

#include <QLineEdit>

class FindCross;

/// A field for what is looked for, with a magnifier, and a cross to empty it. Escape empties it and leaves
/// it, Return leaves it alone: whoever hears left() has the keys go on elsewhere.
class FindField : public QLineEdit
{
    Q_OBJECT

public:
    explicit FindField(QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

public slots:
    /// Takes the keys; what is typed takes the place of what the field holds.
    void begin();

signals:
    /// It takes the keys; what it will look in can be made ready.
    void begun();
    /// The user is through with it.
    void left();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    FindCross* m_cross;
};
