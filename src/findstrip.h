#pragma once

#include <QWidget>

class FindField;
class QImageButton;
class QLabel;
class SongViews;

/// The place above the views where the user types what to find, and reads how much of the list it leaves.
/// Where files make songs, more of them are added here. GUI thread only.
class FindStrip : public QWidget
{
    Q_OBJECT

public:
    explicit FindStrip(QWidget* parent = nullptr);

    /// Has them show what is found, and whatever has the focus for them take it when the user leaves the
    /// field; they must outlive its use.
    void setViews(SongViews& views, QWidget& focus);
    /// Everything shows again.
    void clear();
    /// Hidden until it is shown.
    QImageButton& moreButton() const { return *m_more; }

private:
    void tell(int found, int all);

    FindField* m_field;
    QImageButton* m_more;
    QLabel* m_count;
};
