#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QtEndian>

/// The parts that tags are put together from, by hand: as no writer would in good faith.
namespace MediaBytes {
template <typename Number>
QByteArray little(Number number)
{
    QByteArray bytes(int(sizeof number), '\0');
    qToLittleEndian(number, bytes.data());
    return bytes;
}
QByteArray big32(quint32 number);
QByteArray sevenBits(quint32 number);

QByteArray id3v2(const QByteArray& frames, char version = 4);
QByteArray frame(const char* id, const QByteArray& body, char flags = 0, char version = 4);
/// 128 bytes for a file's end.
QByteArray id3v1(const QByteArray& title, char track, char genre);
/// Items with a footer.
QByteArray apeTag(const QByteArray& items, int count);
QByteArray apeItem(const QByteArray& key, const QByteArray& value);

QByteArray chunk(const char* name, const QByteArray& bytes);
/// The WAV file with further chunks behind its own.
QByteArray withChunks(const QByteArray& wav, const QByteArray& chunks);

/// Vorbis comments without a vendor, and one field of them.
QByteArray comment(const QByteArray& fields, quint32 count);
QByteArray field(const QByteArray& text);
QByteArray flacBlock(int type, const QByteArray& bytes);
/// The FLAC file with further blocks behind its first one.
QByteArray withBlocks(const QByteArray& flac, const QByteArray& blocks);
/// The second packet of the Ogg stream replaced, over as many pages as it takes, without checksums.
QByteArray withSecondPacket(const QByteArray& ogg, const QByteArray& packet);
QByteArray vorbisPacket(const QByteArray& content);

/// The frames of raw AAC, each with its header of seven bytes.
QByteArrayList adtsFrames(const QByteArray& aac);

QByteArray asfObject(const char* guid, const QByteArray& bytes);
/// The object put into the header of a WMA file.
QByteArray withObject(const QByteArray& wma, const QByteArray& object, int times = 1);
} // namespace MediaBytes
