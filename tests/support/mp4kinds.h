#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

/// Songs in MP4 whose tags stand in odd places or odd forms, as other programs leave them.
namespace Mp4Kinds {
struct Kind
{
    QString name;
    QByteArray bytes;
    bool ffmpegReads = true;       ///< ffmpeg finds the tags before they are edited
    bool mutagenReadsLater = true; ///< mutagen finds what is edited
};

/// The song, whose "udta" is the last of its "moov" and "moov" the last of it, without it.
QByteArray untagged(const QByteArray& song);
/// The song, whose "moov" is the last of it, with these atoms at the end of "moov".
QByteArray withInMoov(QByteArray song, const QByteArray& atoms);
/// Such songs made of an untagged one, all with the title "Old" and the artist "Singer".
QList<Kind> oddTags(const QByteArray& song);
/// A list with the title and the artist, the atoms given behind them.
QByteArray list(const QByteArray& behind = QByteArray());
/// The same with all that is around it inside of "moov".
QByteArray listInMoov(const QByteArray& behind = QByteArray());
} // namespace Mp4Kinds
