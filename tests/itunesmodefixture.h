#pragma once

#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "centerwidget.h"
#include "fixtures.h"
#include "guidriver.h"
#include "itunes/itunesmusiclibrary.h"
#include "itunesfixture.h"
#include "mainwindow.h"
#include "songfixtures.h"
#include "startup.h"
#include "windowfixture.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QListView>
#include <QTemporaryDir>
#include <QtTest>

/// The window in the iTunes mode, over a generated library and real media files.
class ITunesFixture : public WindowFixture
{
protected:
    void start();
    void prepare();
    void clear();

    /// What the user does with a panel's button, a view's row and an editor's text.
    static void clickIn(const QWidget* panel, const char* button);
    void clickRow(const char* view, int row, bool twice = false) const;
    static void type(const QWidget* panel, const char* editor, const QString& text);
    QList<QMusicInfo*> songs() const;
    /// Identifiers, which tell songs of one group apart as their titles do not: of the songs shown, of the
    /// tracks with these numbers, and of those entries that the library still has.
    QList<QByteArray> shownIds() const;
    QList<QByteArray> idsOf(const QList<int>& tracks) const;
    QList<QByteArray> idsInLibrary() const;
    QString media(const QString& name, const QString& title, const QByteArray& cover = QByteArray());
    void addTrack(const QString& file, const QByteArray& title, quint64 duration = 3000);
    void addTracks(const QString& file, int count);
    void writeLibrary();
    QByteArray library() const { return Fixtures::readBytes(m_library); }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_library;
    QVector<Fixtures::ITunesTrack> m_tracks;
    std::unique_ptr<DialogDriver> m_dialogs;
};

inline void ITunesFixture::start()
{
    Startup::afterApplication();
    Fixtures::genericCover();
}

inline void ITunesFixture::prepare()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_library = m_folder->filePath("iTunes Music Library.xml");
    qputenv("MELODRIFT_ITUNES_LIBRARY", m_library.toUtf8());
    m_tracks.clear();
    m_window = std::make_unique<MainWindow>();
    m_window->setMinimumSize(1000, 700);
    m_window->show();
    m_dialogs = std::make_unique<DialogDriver>();
}

inline void ITunesFixture::clear()
{
    closeWindow();
    m_dialogs.reset();
}

inline void ITunesFixture::clickIn(const QWidget* panel, const char* button)
{
    auto* found = panel->findChild<QImageButton*>(button);
    QVERIFY2(found && found->isVisible(), button);
    QTest::mouseClick(found, Qt::LeftButton);
}

inline void ITunesFixture::clickRow(const char* view, int row, bool twice) const
{
    auto* list = part<QListView>(view);
    list->scrollTo(list->model()->index(row, 0));
    WindowFixture::clickRow(list, row, twice);
}

inline void ITunesFixture::type(const QWidget* panel, const char* editor, const QString& text)
{
    auto* line = panel->findChild<QLineEdit*>(editor);
    QVERIFY2(line && line->isVisible(), editor);
    QTest::keyClick(line, Qt::Key_A, Qt::ControlModifier);
    QApplication::clipboard()->setText(text); // simulated keys are ASCII only
    QTest::keyClick(line, Qt::Key_V, Qt::ControlModifier);
}

inline QList<QMusicInfo*> ITunesFixture::songs() const
{
    part<CenterWidget>("m_middleMusicWidget")->slotShowAllmusicView();
    const auto* model = part<QListView>("m_allMusicListView")->model();
    QList<QMusicInfo*> found;
    for (int row = 0; row < model->rowCount(); ++row)
        found.append(static_cast<QMusicInfo*>(model->index(row, 0).internalPointer()));
    return found;
}

inline QList<QByteArray> ITunesFixture::shownIds() const
{
    QList<QByteArray> ids;
    for (const QMusicInfo* song : songs())
        ids.append(song->track->persistentId);
    return ids;
}

inline QList<QByteArray> ITunesFixture::idsOf(const QList<int>& tracks) const
{
    QList<QByteArray> ids;
    for (const int track : tracks)
        ids.append(Fixtures::itunesIdentifier(m_tracks.at(track).persistentId));
    return ids;
}

inline QList<QByteArray> ITunesFixture::idsInLibrary() const
{
    QList<QByteArray> ids;
    const QByteArray text = library();
    for (const Fixtures::ITunesTrack& track : m_tracks)
        if (text.contains("<key>Persistent ID</key><string>" +
                          Fixtures::itunesIdentifier(track.persistentId) + "</string>"))
            ids.append(Fixtures::itunesIdentifier(track.persistentId));
    return ids;
}

inline QString ITunesFixture::media(const QString& name, const QString& title, const QByteArray& cover)
{
    const QString path = Fixtures::copyTone("mp3", m_folder->path(), name);
    AudioFile::write(path, {{TAG_TITLE, title}}, &cover);
    return path;
}

inline void ITunesFixture::addTrack(const QString& file, const QByteArray& title, quint64 duration)
{
    Fixtures::ITunesTrack track = Fixtures::itunesTrack(m_tracks.size(), file);
    track.name = title;
    track.duration = duration;
    m_tracks.append(track);
}

/// So many songs of different titles in one file.
inline void ITunesFixture::addTracks(const QString& file, int count)
{
    for (int i = 0; i < count; ++i)
        addTrack(file, "Song " + QByteArray::number(m_tracks.size()));
}

inline void ITunesFixture::writeLibrary()
{
    Fixtures::ITunesPlaylist all;
    all.name = "Library";
    for (const Fixtures::ITunesTrack& track : m_tracks)
        all.trackIds.append(track.trackId);
    Fixtures::writeLibrary(m_library, Fixtures::itunesLibrary(m_tracks, {all}));
}
