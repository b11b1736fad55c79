#pragma once

#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "centerfixture.h"
#include "duplicatemusicdetailedwidget.h"
#include "dupmusicbarwidget.h"
#include "dupmusicinfo.h"
#include "fixtures.h"
#include "qmusicinfo.h"

#include <QListView>
#include <QtTest>

/// Groups of real files: every name "T-n.mp3" has the title "T".
inline void makeGroups(const QString& folder, const QList<int>& sizes)
{
    for (int group = 0; group < sizes.size(); ++group) {
        const QString title = QStringLiteral("T%1").arg(group, 3, 10, QLatin1Char('0'));
        const QString first = Fixtures::copyTone("mp3", folder, title + QLatin1String("-00"));
        AudioFile::write(first,
                         {{TAG_TITLE, title}, {TAG_ARTIST, "A"}, {TAG_ALBUM, "B"}, {TAG_GENRE, "Pop"}});
        for (int song = 1; song < sizes.at(group); ++song)
            QFile::copy(first,
                        QStringLiteral("%1/%2-%3.mp3").arg(folder, title).arg(song, 2, 10, QLatin1Char('0')));
    }
}

inline QStringList filesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

/// A content area with groups of real files.
class DeletionFixture : public CenterFixture
{
protected:
    void add(const QString& folder);
    void addAGreatGroup(int count);
    void openGroup(int row);
    QList<QMusicInfo*> allSongs() const;
    QList<DupMusicInfo*> groups() const;
    DuplicateMusicDetailedWidget* panel() const
    {
        return m_center->findChild<DuplicateMusicDetailedWidget*>();
    }
    QList<DupMusicbarWidget*> rows() const { return panel()->findChildren<DupMusicbarWidget*>(); }
};

inline void DeletionFixture::add(const QString& folder)
{
    m_dialogs->expectButton("m_btnType");
    m_center->TakeDroppedPaths({folder});
    m_center->slotShowDuplicateMusicView();
}

inline QList<QMusicInfo*> DeletionFixture::allSongs() const
{
    m_center->slotShowAllmusicView();
    const auto* model = m_center->findChild<QListView*>("m_allMusicListView")->model();
    QList<QMusicInfo*> songs;
    for (int row = 0; row < model->rowCount(); ++row)
        songs.append(static_cast<QMusicInfo*>(model->index(row, 0).internalPointer()));
    m_center->slotShowDuplicateMusicView();
    return songs;
}

inline QList<DupMusicInfo*> DeletionFixture::groups() const
{
    const auto* model = m_center->findChild<QListView*>("m_dupMusicListView")->model();
    QList<DupMusicInfo*> found;
    for (int row = 0; row < model->rowCount(); ++row)
        found.append(static_cast<DupMusicInfo*>(model->index(row, 0).internalPointer()));
    return found;
}

inline void DeletionFixture::openGroup(int row)
{
    clickRow(m_center->findChild<QListView*>("m_dupMusicListView"), row);
}

/// One group of a file and so many links to it.
inline void DeletionFixture::addAGreatGroup(int count)
{
    makeGroups(m_folder->path(), {1});
    const QString first = m_folder->filePath("T000-00.mp3");
    for (int i = 0; i < count; ++i)
        QFile::link(first, m_folder->filePath(QString("link%1.mp3").arg(i, 4, 10, QLatin1Char('0'))));
    add(m_folder->path());
}
