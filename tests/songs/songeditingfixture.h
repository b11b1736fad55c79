#pragma once

#include "fixtures.h"
#include "songfixtures.h"
#include "songs/songediting.h"
#include "startup.h"

#include <QTemporaryDir>
#include <QtTest>

#include <memory>

/// Local songs on files in a folder of the test's own, and an edit for them.
class SongEditingFixture : public QObject
{
public:
    static void initMain() { Startup::beforeApplication(); }

protected:
    static void start();
    /// A row for each format, the column `kind`.
    static void everyFormat();
    static std::unique_ptr<QMusicInfo> songOn(const QString& path);
    static SongEdit sampleEdit();

    QTemporaryDir m_folder;
    Fixtures::ModeGuard m_mode{true};
};

inline void SongEditingFixture::start()
{
    Startup::afterApplication();
    Fixtures::genericCover();
}

inline void SongEditingFixture::everyFormat()
{
    QTest::addColumn<QString>("kind");
    for (const QString& kind : Fixtures::formats())
        QTest::newRow(qPrintable(kind)) << kind;
}

inline std::unique_ptr<QMusicInfo> SongEditingFixture::songOn(const QString& path)
{
    auto song = std::make_unique<QMusicInfo>();
    song->localInfo = std::make_unique<LocalMusicInfo>();
    song->localInfo->filePath = path;
    return song;
}

inline SongEdit SongEditingFixture::sampleEdit()
{
    SongEdit edit;
    edit.title = QStringLiteral("Nächte \U0001D11E");
    edit.artist = QStringLiteral("Ida & Wren");
    edit.album = QStringLiteral("潮");
    edit.genre = QStringLiteral("Rock");
    edit.year = 2012;
    edit.trackNumber = 3;
    return edit;
}
