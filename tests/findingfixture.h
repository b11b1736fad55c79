#pragma once

#include "centerfixture.h"

#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QTableView>

/// A content area in the local mode in which songs are looked for.
class FindingFixture : public CenterFixture
{
protected:
    QLineEdit* field() const { return m_center->findChild<QLineEdit*>("m_findField"); }
    void type(const QString& typed) const
    {
        field()->clear();
        QTest::keyClicks(field(), typed);
    }
    QString count() const { return m_center->findChild<QLabel*>("m_labFound")->text(); }
    /// What the first column of the view shows.
    QStringList rows(const char* name) const
    {
        QStringList texts;
        const QAbstractItemModel* model = view<QAbstractItemView>(name)->model();
        for (int row = 0; row < model->rowCount(); ++row)
            texts.append(model->index(row, 0).data().toString());
        return texts;
    }
    void clickHeader(const char* table, int column) const
    {
        QHeaderView* header = view<QTableView>(table)->horizontalHeader();
        const QPoint place(header->sectionViewportPosition(column) + 20, header->height() / 2);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, place);
    }
    /// What the middle of the views says; empty for nothing.
    QString notice() const
    {
        const auto* said = m_center->findChild<QWidget*>("m_viewNotice");
        return said->isVisible() ? said->accessibleName() : QString();
    }
};
