// Reading and editing below the file system: bytes in memory are read and edited as files are.
#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "base/filebytes.h"
#include "fixtures.h"
#include "tags/parsedmedia.h"
#include "tags/tagediting.h"
#include "tags/tagreading.h"

#include <taglib/id3v2tag.h>
#include <taglib/textidentificationframe.h>

#include <QTemporaryDir>
#include <QtTest>

#include <optional>

using audiocore::ParsedMedia;
using audiocore::TagEdits;
using base::MemoryFile;

class TestTagEditing : public QObject
{
    Q_OBJECT

private slots:
    void memoryGetsTheBytesOfTheFile_data();
    void memoryGetsTheBytesOfTheFile();
    void whatPlaysOtherwiseIsRefused();
    void aFullMemoryIsToldAsAFullDisk();
    void bytesAreAskedForWhereTheyTellMore();

private:
    QTemporaryDir m_folder;
};

namespace {
std::string contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string();
}

TagEdits editsOf(const QHash<int, QString>& texts, const QByteArray& picture)
{
    TagEdits edits;
    for (auto text = texts.begin(); text != texts.end(); ++text)
        edits.texts[size_t(text.key())] = text.value().toStdString();
    edits.picture = TagLib::ByteVector(picture.constData(), unsigned(picture.size()));
    return edits;
}

/// Why the edits were not made; empty when they were.
std::string edit(MemoryFile& file, const TagEdits& edits, const ParsedMedia& original)
{
    std::string error;
    audiocore::editCopy(file, "memory", audiocore::neededEdits(original, edits).edits, original, error);
    return error;
}
} // namespace

void TestTagEditing::memoryGetsTheBytesOfTheFile_data()
{
    QTest::addColumn<QString>("kind");
    for (const QString& kind : Fixtures::formats() + Fixtures::furtherKinds())
        QTest::newRow(qPrintable(kind)) << kind;
}

void TestTagEditing::memoryGetsTheBytesOfTheFile()
{
    QFETCH(QString, kind);
    const QString path = Fixtures::copyTone(kind, m_folder.path());
    MemoryFile memory(contentOf(path));
    const auto original = audiocore::parsedMedia(memory, "memory");
    QCOMPARE(int(original->format), AudioFile::properties(path).format);
    QCOMPARE(int(original->properties.milliseconds), AudioFile::properties(path).duration);

    const QHash<int, QString> texts = {{TAG_TITLE, QStringLiteral("Vinterljus")},
                                       {TAG_YEAR, QStringLiteral("2018")}};
    const QByteArray picture = Fixtures::jpeg(40, 40, 1);
    QCOMPARE(edit(memory, editsOf(texts, picture), *original), std::string());
    QCOMPARE(AudioFile::write(path, texts, &picture), 0);
    QVERIFY(memory.bytes() == contentOf(path));
    QCOMPARE(int(audiocore::parsedMedia(memory, "memory")->items.size()), 3);
}

void TestTagEditing::whatPlaysOtherwiseIsRefused()
{
    MemoryFile memory(contentOf(Fixtures::tone(QStringLiteral("mp3"))));
    ParsedMedia other = *audiocore::parsedMedia(memory, "memory");
    other.properties.milliseconds += 101;
    QCOMPARE(edit(memory, editsOf({{TAG_TITLE, QStringLiteral("T")}}, QByteArray()), other),
             std::string("the new file does not play as the old one does"));
}

void TestTagEditing::aFullMemoryIsToldAsAFullDisk()
{
    const std::string bytes = contentOf(Fixtures::tone(QStringLiteral("mp3")));
    MemoryFile memory(bytes, qint64(bytes.size()) + 10);
    const auto original = audiocore::parsedMedia(memory, "memory");
    QCOMPARE(edit(memory, editsOf({{TAG_TITLE, QStringLiteral("T")}}, QByteArray()), *original),
             std::string("the new file cannot be written, the disk may be full"));
}

void TestTagEditing::bytesAreAskedForWhereTheyTellMore()
{
    const auto asked = [](const TagLib::ID3v2::Tag& tag) {
        int times = 0;
        audiocore::TagReading().add(&tag, [&times] {
            ++times;
            return std::nullopt;
        });
        return times;
    };
    TagLib::ID3v2::Tag tag;
    tag.setTitle("T");
    QCOMPARE(asked(tag), 0);
    tag.addFrame(new TagLib::ID3v2::TextIdentificationFrame("TPE1", TagLib::String::UTF8)); // says nothing
    QCOMPARE(asked(tag), 1);
}

QTEST_GUILESS_MAIN(TestTagEditing)
#include "tst_tagediting.moc"
