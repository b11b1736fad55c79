#pragma once

#include <taglib/attachedpictureframe.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QString>

/// Pictures of an MP3's ID3v2 tag, where there may be more than a tag object tells of.
namespace SeveralPictures {
/// Adds them: the front cover, the back cover and so on.
inline void add(const QString& path, const QByteArrayList& pictures)
{
    constexpr int frontCover = 3;
    TagLib::MPEG::File file(QFile::encodeName(path).constData());
    for (int i = 0; i < pictures.size(); ++i) {
        auto* frame = new TagLib::ID3v2::AttachedPictureFrame;
        frame->setType(TagLib::ID3v2::AttachedPictureFrame::Type(frontCover + i));
        frame->setMimeType("image/png");
        frame->setPicture(TagLib::ByteVector(pictures.at(i).constData(), unsigned(pictures.at(i).size())));
        file.ID3v2Tag(true)->addFrame(frame);
    }
    file.save();
}

inline int countIn(const QString& path)
{
    TagLib::MPEG::File file(QFile::encodeName(path).constData());
    return int(file.ID3v2Tag(true)->frameList("APIC").size());
}
} // namespace SeveralPictures
