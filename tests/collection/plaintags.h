#pragma once

#include "base/newfile.h"
#include "base/platform.h"
#include "collection/tagfiles.h"

#include <QFile>

#include <memory>

/// Tags of files that hold nothing else: a line for each field, and one for the picture.
class PlainTags : public TagFiles
{
public:
    QString read(const std::string& path, TagTexts& held) override
    {
        QFile file(QFile::decodeName(path.c_str()));
        if (!file.open(QIODevice::ReadOnly))
            return file.errorString();
        held = TagTexts();
        for (const QByteArray& line : file.readAll().split('\n')) {
            const int mark = line.indexOf('=');
            const QByteArray value = line.mid(mark + 1);
            if (line.startsWith("picture="))
                held.picture = QByteArray::fromHex(value);
            else if (mark > 0)
                held.texts.insert(QString::fromUtf8(line.left(mark)), QString::fromUtf8(value));
        }
        return QString();
    }
    QString write(const std::string& path, const TagTexts& change) override
    {
        TagTexts held;
        QString reason = read(path, held);
        for (auto text = change.texts.begin(); text != change.texts.end(); ++text)
            held.texts.insert(text.key(), text.value());
        if (change.picture)
            held.picture = change.picture;
        return reason.isEmpty() ? replace(path, bytesOf(held)) : reason;
    }

    static QByteArray bytesOf(const TagTexts& held)
    {
        QByteArray bytes;
        for (auto text = held.texts.begin(); text != held.texts.end(); ++text)
            if (!text.value().isEmpty())
                bytes += text.key().toUtf8() + '=' + text.value().toUtf8() + '\n';
        if (held.picture && !held.picture->isEmpty())
            bytes += "picture=" + held.picture->toHex() + '\n';
        return bytes;
    }

private:
    /// At one stroke, as a save does.
    static QString replace(const std::string& path, const QByteArray& bytes)
    {
        base::Failure failure;
        const auto made = base::NewFile::beside(path, base::NewFile::Content::Empty, failure);
        const auto size = std::size_t(bytes.size());
        if (made && base::writeAt(made->file(), 0, bytes.constData(), size) == size &&
            made->replaceOriginal(failure) == base::NewFile::Taking::Done)
            return QString();
        return QString::fromStdString(failure.text);
    }
};
