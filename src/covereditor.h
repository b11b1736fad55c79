#pragma once

#include "common/footline.h"

#include <QObject>
#include <QString>

class KeepOffers;
class QImageWidget;
struct QMusicInfo;

/// The cover in the panel of one song, and what an apply would do with it: a new one may be chosen or
/// identified, or the song's own be kept. Nothing is written here. GUI thread only.
class CoverEditor : public QObject
{
    Q_OBJECT

public:
    /// Neither is owned; both must outlive this.
    CoverEditor(QImageWidget& picture, KeepOffers& offers);

    /// A new cover that was chosen stays so for another song; what is about the former one alone goes. Null
    /// for no song.
    void setSong(const QMusicInfo* song);
    /// The editing begins: the cover can be clicked, and what an apply would write shows.
    void begin();
    /// It is over: the song's own cover shows.
    void end();
    /// The song has another cover of its own meanwhile.
    void showAnew();
    /// Asks the user for a picture; over the panel.
    void choose(QWidget* panel);
    /// One that an identification brought.
    void takeIdentified(const QString& path) { take(path, Origin::Identified); }

    /// What an apply is to write; empty for nothing.
    QString newPath() const { return m_strNewPath; }
    bool isOwnKept() const;
    /// It was written.
    void forgetNew() { m_strNewPath.clear(); }

signals:
    /// For the foot of the window.
    void told(const FootText& told);

private:
    /// Where a new cover comes from: the user, or, for this song alone, an identification or the song itself.
    enum class Origin { Chosen, Identified, Own };

    void show(const QString& path);
    void take(const QString& path, Origin origin);
    void keepOwn(bool keep);
    void offerToKeep();

    QImageWidget& m_picture;
    KeepOffers& m_offers;
    const QMusicInfo* m_pSong = nullptr;
    QString m_strNewPath; ///< not yet applied
    Origin m_newOrigin = Origin::Chosen;
};
