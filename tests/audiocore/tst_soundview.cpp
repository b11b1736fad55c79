// What decoders get to see of a file's places and end.
#include "fixtures.h"
#include "mediabytes.h"
#include "tags/soundview.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

#include <memory>

using audiocore::SoundView;
using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

class TestSoundView : public QObject
{
    Q_OBJECT

private slots:
    void aWavFileEndsBehindItsLastChunk_data();
    void aWavFileEndsBehindItsLastChunk();
    void theOpenFileIsLookedAtAndNoOther();
    void tagsAreNotShown();
    void tagsInsideAnExtensionAreNotShown();
    void theBlockThatDescribesTheStreamIsShown();

private:
    QTemporaryDir m_folder;
};

namespace {
File opened(const QString& path)
{
    return {std::fopen(QFile::encodeName(path).constData(), "rb"), std::fclose};
}

std::optional<SoundView> viewOf(const File& file)
{
    return SoundView::of(file.get(), "view");
}

QByteArray shown(const SoundView& view, const File& file, std::int64_t position, int count)
{
    QByteArray bytes(count, '\0');
    bytes.truncate(int(view.readAt(file.get(), position, bytes.data(), std::size_t(count))));
    return bytes;
}

QByteArray little32(quint32 number)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(number, bytes.data());
    return bytes;
}

QByteArray wavOf(quint32 soundSize, const QByteArray& soundAndMore)
{
    const QByteArray format =
        QByteArray::fromHex("0100010044ac000088580100") + QByteArray::fromHex("02001000");
    return "RIFF" + little32(100) + "WAVEfmt " + little32(16) + format + "data" + little32(soundSize) +
           soundAndMore;
}
} // namespace

void TestSoundView::aWavFileEndsBehindItsLastChunk_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<qint64>("hidden");
    const QByteArray sound(50, '\1');
    QTest::newRow("whole") << wavOf(50, sound) << qint64(0);
    QTest::newRow("a hole behind") << wavOf(50, sound + QByteArray(1000, '\0')) << qint64(1000);
    QTest::newRow("a chunk and a hole behind")
        << wavOf(50, sound + "abcd" + little32(2) + QByteArray(1002, '\0')) << qint64(1000);
    QTest::newRow("a chunk behind") << wavOf(50, sound + "abcd" + little32(0)) << qint64(0);
    QTest::newRow("a piece of a chunk behind") << wavOf(50, sound + "abc") << qint64(0);
    QTest::newRow("streamed, no size") << wavOf(0, sound) << qint64(0);
    QTest::newRow("streamed, the largest size") << wavOf(0xFFFFFFFF, sound) << qint64(0);
    QTest::newRow("unknown bytes before the sound")
        << "RIFF" + little32(100) + "WAVE" + QByteArray(50, '\0') + wavOf(50, sound).mid(12) << qint64(0);
}

void TestSoundView::aWavFileEndsBehindItsLastChunk()
{
    QFETCH(QByteArray, file);
    QFETCH(qint64, hidden);
    const QString path = m_folder.filePath("end.wav");
    QFile written(path);
    QVERIFY(written.open(QIODevice::WriteOnly) && written.write(file) == file.size());
    written.close();
    const File song = opened(path);
    const std::optional<SoundView> view = viewOf(song);
    QVERIFY(view);
    QCOMPARE(qint64(view->shownOf(file.size())), file.size() - hidden);
    QCOMPARE(shown(*view, song, 0, file.size()), file.left(file.size() - int(hidden)));
    QCOMPARE(shown(*view, song, file.size(), 10), QByteArray());
}

void TestSoundView::theOpenFileIsLookedAtAndNoOther()
{
    const QString path = Fixtures::copyTone("wav", m_folder.path(), "replaced");
    const File song = opened(path);
    QVERIFY(QFile::remove(path));
    const std::optional<SoundView> view = viewOf(song);
    QVERIFY(view);
    QCOMPARE(shown(*view, song, 0, 4), QByteArray("RIFF"));
}

void TestSoundView::tagsAreNotShown()
{
    const QByteArray sound(50, '\1');
    const QByteArray list = "LIST" + little32(12) + "INFOIART" + little32(0);
    QFile written(m_folder.filePath("list.wav"));
    QVERIFY(written.open(QIODevice::WriteOnly) && written.write(wavOf(50, sound + list)) > 0);
    written.close();
    const File song = opened(written.fileName());
    const std::optional<SoundView> view = viewOf(song);
    QVERIFY(view);
    QCOMPARE(shown(*view, song, written.size() - list.size(), list.size()),
             QByteArray(list).replace("LIST", "JUNK"));
}

void TestSoundView::tagsInsideAnExtensionAreNotShown()
{
    QFile tone(Fixtures::tone("wma", 1000));
    QVERIFY(tone.open(QIODevice::ReadOnly));
    const QByteArray fields = MediaBytes::asfObject("EACBF8C5AF5B77488467AA8C44FA4CCA", QByteArray(2, '\0'));
    const QByteArray reserved(18, '\0');
    const QByteArray extension =
        MediaBytes::asfObject("B503BF5F2EA9CF118EE300C00C205365",
                              reserved + little32(quint32(2 * fields.size())) + fields + fields);
    QFile written(m_folder.filePath("extension.wma"));
    QVERIFY(written.open(QIODevice::WriteOnly));
    QVERIFY(written.write(MediaBytes::withObject(tone.readAll(), extension)) > 0);
    written.close();
    const File song = opened(written.fileName());
    const std::optional<SoundView> view = viewOf(song);
    QVERIFY(view);
    const int headerHead = 30;
    const int extensionHead = 46;
    for (const int place : {headerHead + extensionHead, headerHead + extensionHead + fields.size()})
        QCOMPARE(shown(*view, song, place, 16), QByteArray("----") + fields.mid(4, 12));
}

void TestSoundView::theBlockThatDescribesTheStreamIsShown()
{
    // Also where it is the only one, and so the last one.
    const QByteArray only = "fLaC\x80" + QByteArray("\0\0\x22", 3) + QByteArray(34, '\1');
    QFile written(m_folder.filePath("only.flac"));
    QVERIFY(written.open(QIODevice::WriteOnly) && written.write(only) == only.size());
    written.close();
    const File song = opened(written.fileName());
    const std::optional<SoundView> view = viewOf(song);
    QVERIFY(view);
    QCOMPARE(shown(*view, song, 0, only.size()), only);
}

QTEST_GUILESS_MAIN(TestSoundView)
#include "tst_soundview.moc"
