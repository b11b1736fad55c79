#pragma once

#include "common/footline.h"
#include "common/textlink.h"
#include "itunesmodefixture.h"
#include "musicdetailedinfowidget.h"
#include "playsongwidget.h"

#include <QFile>
#include <QLabel>

#include <sys/stat.h>

/// The window with real media files, and what its foot says of what is done with them.
class FootFixture : public ITunesFixture
{
protected:
    void prepareFoot()
    {
        m_bin.empty();
        prepare();
    }
    void clearFoot()
    {
        setMode(m_folder->path(), 0755);
        clear();
    }
    static void setMode(const QString& path, mode_t mode)
    {
        QCOMPARE(::chmod(QFile::encodeName(path).constData(), mode), 0);
    }
    FootLine* line() const { return part<FootLine>("m_footLine"); }
    QString told() const { return line()->text(); }
    QStringList links() const
    {
        QStringList captions;
        for (const TextLink* link : line()->findChildren<TextLink*>())
            if (!link->isHidden())
                captions.append(link->text());
        return captions;
    }
    TextLink* link(const QString& caption) const
    {
        for (TextLink* link : line()->findChildren<TextLink*>())
            if (!link->isHidden() && link->text() == caption)
                return link;
        return nullptr;
    }
    void clickLink(const QString& caption) const
    {
        TextLink* const found = link(caption);
        QVERIFY2(found, "there is no such link");
        QTest::mouseClick(found, Qt::LeftButton);
    }
    /// As the window system tells it: the second press is the one of a double click.
    void doubleClickLink(const QString& caption) const
    {
        const TextLink* const found = link(caption);
        QVERIFY2(found, "there is no such link");
        QTest::mouseDClick(m_window->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                           found->mapTo(m_window.get(), QPoint(4, found->height() / 2)));
    }
    /// As quickly as the second one came.
    void clickThirdTime(const QString& caption) const
    {
        const TextLink* const found = link(caption);
        QVERIFY2(found, "there is no such link");
        QTest::lastMouseTimestamp -= QTest::mouseDoubleClickInterval; // which every click adds
        QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                          found->mapTo(m_window.get(), QPoint(4, found->height() / 2)));
    }
    const QWidget* panel() const { return part<MusicDetailedInfoWidget>("m_musicDetailedWidget"); }
    void switchToLocal() const
    {
        click("m_btniTunesClean");
        QTRY_VERIFY(part<QWidget>("m_btnLocalClean")->isVisible());
    }
    /// How far the song is that plays.
    static QString played()
    {
        const auto* const player = findWindow<PlaySongWidget>();
        return player ? player->findChild<QLabel*>("m_labelShowTime")->text() : QString();
    }
    QString tone(const QString& name, const QString& title, const QString& genre = "Pop",
                 const char* kind = "mp3") const
    {
        const QString path = Fixtures::copyTone(kind, m_folder->path(), name);
        AudioFile::write(path, {{TAG_TITLE, title}, {TAG_ARTIST, "A"}, {TAG_ALBUM, "B"}, {TAG_GENRE, genre}});
        return path;
    }
    void add(const QStringList& paths)
    {
        m_dialogs->expectButton("m_btnType");
        part<CenterWidget>("m_middleMusicWidget")->TakeDroppedPaths(paths);
    }
    void edit(int row, const QString& title) const
    {
        clickRow("m_allMusicListView", row);
        clickIn(panel(), "m_btnEdit");
        type(panel(), "m_lineTitle", title);
    }
};
