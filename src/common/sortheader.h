#pragma once

#include <QHeaderView>

/// The header of a table that is ordered by clicks on it: an arrow behind the caption of the column says so.
/// What a click does is for whoever hears sectionClicked().
class SortHeader : public QHeaderView
{
    Q_OBJECT

public:
    explicit SortHeader(QWidget* parent = nullptr);

    /// None has the arrow for -1.
    void mark(int column, bool backwards);
    QString caption(int column) const;
    /// The order of the table in words, where it is that of this column.
    QString orderOf(int column) const;

protected:
    void paintSection(QPainter* painter, const QRect& rect, int column) const override;

private:
    int m_column = -1;
    bool m_backwards = false;
};
