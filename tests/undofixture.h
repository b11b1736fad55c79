#pragma once

#include "common/retractlabel.h"
#include "dupmusicbarwidget.h"
#include "footfixture.h"

/// The window, what is done there with songs and groups, and what it shows of it.
class UndoFixture : public FootFixture
{
protected:
    void undo() const
    {
        QApplication::setActiveWindow(m_window.get()); // as desktops do when a dialog has closed
        QTest::keyClick(m_window.get(), Qt::Key_Z, Qt::ControlModifier);
    }
    void apply(int row, const QString& title) const
    {
        edit(row, title);
        clickIn(panel(), "m_btnApply");
    }
    /// Of two songs "0" with these files, each edited twice.
    void editsGoBackInTurn(const QString& path, const QString& other) const
    {
        for (const char* title : {"1", "2"})
            for (int row : {0, 1})
                apply(row, title);
        QStringList titles = {"2", "2"};
        for (const char* title : {"1", "0"})
            for (int row : {1, 0}) {
                QCOMPARE(links(), QStringList("Undo"));
                undo();
                titles[row] = title;
                QCOMPARE(QStringList({titleOf(path), titleOf(other)}), titles);
                QCOMPARE(listed(), titles);
            }
        QCOMPARE(links(), QStringList());
    }
    QWidget* groupPanel() const { return part<QWidget>("m_dupMusicDetailedWidget"); }
    /// Titles in the view of all songs.
    QStringList listed(const char* view = "m_allMusicListView") const
    {
        const auto* model = part<QListView>(view)->model();
        QStringList titles;
        for (int row = 0; row < model->rowCount(); ++row)
            titles.append(model->index(row, 0).data().toString());
        return titles;
    }
    /// What the navigation pane says of songs, undefined songs and groups.
    QStringList counts() const
    {
        QStringList texts;
        for (const char* button : {"m_btnMusicAll", "m_btnMusicUndefined", "m_btnMusicDuplicate"})
            texts.append(part<QImageButton>(button)->btnText());
        return texts;
    }
    void openGroup(int row)
    {
        click("m_btnMusicDuplicate");
        clickRow("m_dupMusicListView", row);
    }
    void clearGroup()
    {
        m_dialogs->expectButton("m_btnOK");
        clickIn(groupPanel(), "m_btnClearOne");
    }
    QList<DupMusicbarWidget*> rows() const { return m_window->findChildren<DupMusicbarWidget*>(); }
    QString titleOf(const QString& path) const { return AudioFile::read(path).texts.value(TAG_TITLE); }
    QString shownTitle() const { return panel()->findChild<RetractLabel*>("m_titleName")->getName(); }
};
