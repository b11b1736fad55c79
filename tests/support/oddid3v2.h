#pragma once

#include <QByteArray>
#include <QList>

/// ID3v2 tags as other programs left them, with frames that are empty or broken.
namespace OddId3v2 {
struct Frames
{
    QByteArray name;
    int version;
    QByteArray bytes;
};

/// What readers pass over: frames follow it.
QList<Frames> passedOver();
/// What is no frame: whatever follows it is none, either.
QList<Frames> ends();

/// The ids are those of the newest versions; the oldest one's are its own.
QByteArray frame(int version, const char* id, const QByteArray& body);
/// A frame's body.
QByteArray text(const char* value);
/// A tag of a size that none can have.
QByteArray ofNoSize(const QByteArray& tag);
/// The chunk of a WAV file whose tag says to go on behind it, over these frames.
QByteArray chunkBefore(const QByteArray& inside, const QByteArray& behind);
} // namespace OddId3v2
