#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "playing.h"

#include <taglib/vorbisfile.h>

#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

namespace {
QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void save(const QString& path, const QByteArray& content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

QByteArray big(quint32 number)
{
    const quint32 bytes = qToBigEndian(number);
    return QByteArray(reinterpret_cast<const char*>(&bytes), 4);
}

QByteArray little(quint32 number)
{
    const quint32 bytes = qToLittleEndian(number);
    return QByteArray(reinterpret_cast<const char*>(&bytes), 4);
}

QByteArray sevenBits(int number)
{
    return QByteArray(1, char(number >> 21 & 127)) + char(number >> 14 & 127) + char(number >> 7 & 127) +
           char(number & 127);
}

/// A frame of an ID3v2 tag; `flags` are left out of the oldest version, which has none.
QByteArray frame(int version, const char* id, const QByteArray& body, const QByteArray& flags = {2, '\0'})
{
    const QByteArray size = version == 4 ? sevenBits(body.size()) : big(quint32(body.size()));
    return version == 2 ? id + size.mid(1) + body : id + size + flags + body;
}

QByteArray id3v2(int version, const QByteArrayList& frames, char flags = 0)
{
    const QByteArray body = frames.join();
    return QByteArray("ID3") + char(version) + '\0' + flags + sevenBits(body.size()) + body;
}

QByteArray text(const char* value)
{
    return QByteArray(1, '\0') + value;
}

QByteArray apeItem(const QByteArray& key, const QByteArray& value, quint32 flags = 0)
{
    return little(quint32(value.size())) + little(flags) + key + '\0' + value;
}

QByteArray apeTag(const QByteArrayList& items)
{
    const QByteArray body = items.join();
    const auto edge = [&](quint32 flags) {
        return "APETAGEX" + little(2000) + little(quint32(body.size()) + 32) + little(quint32(items.size())) +
               little(flags) + QByteArray(8, '\0');
    };
    return edge(0xA0000000) + body + edge(0x80000000);
}

QByteArray field(const QByteArray& text)
{
    return little(quint32(text.size())) + text;
}

QByteArray comment(const QByteArrayList& fields)
{
    return field("vendor") + little(quint32(fields.size())) + fields.join();
}

/// A FLAC tone with this comment, its own blocks kept.
QByteArray flacWith(const QByteArray& commentBytes)
{
    const QByteArray tone = contentOf(Fixtures::tone(QStringLiteral("flac")));
    QByteArray blocks;
    int position = 4;
    for (bool last = false; !last;) {
        const int kind = tone.at(position) & 127;
        const int size = qFromBigEndian<quint32>(tone.constData() + position) & 0xFFFFFF;
        last = tone.at(position) & char(128);
        if (kind != 4)
            blocks += char(kind) + tone.mid(position + 1, size + 3);
        position += size + 4;
    }
    const QByteArray own = char(0x84) + big(quint32(commentBytes.size())).mid(1) + commentBytes;
    return "fLaC" + blocks + own + tone.mid(position);
}

QByteArray atom(const QByteArray& name, const QByteArray& body)
{
    return big(quint32(body.size()) + 8) + name + body;
}

QByteArray dataAtom(quint32 kind, const QByteArray& value)
{
    return atom("data", big(kind) + big(0) + value);
}

/// Puts further atoms into the list of tags, over the free room behind it.
void addAtoms(const QString& path, const QByteArray& atoms)
{
    QByteArray content = contentOf(path);
    const int list = content.indexOf("ilst") - 4;
    QVERIFY(list > 0);
    const int size = int(qFromBigEndian<quint32>(content.constData() + list));
    const int room = int(qFromBigEndian<quint32>(content.constData() + list + size));
    QCOMPARE(content.mid(list + size + 4, 4), QByteArray("free"));
    QVERIFY(room > atoms.size() + 8);
    content.replace(list + size, room, atoms + atom("free", QByteArray(room - atoms.size() - 8, '\0')));
    content.replace(list, 4, big(quint32(size + atoms.size())));
    save(path, content);
}

QByteArray chunk(const QByteArray& id, const QByteArray& body)
{
    return id + little(quint32(body.size())) + body + QByteArray(body.size() % 2, '\0');
}

QByteArray wavWith(const QByteArray& chunks)
{
    const QByteArray body = contentOf(Fixtures::tone(QStringLiteral("wav"))).mid(8) + chunks;
    return "RIFF" + little(quint32(body.size())) + body;
}

/// What is shown as the artist when the bytes "Caf\xE9" stand for it.
QString cafe()
{
    return QStringLiteral("Café");
}

void editTitle(const QString& path)
{
    AudioFile::takeLog();
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("Nächster, längerer Titel")}}), 0);
    QCOMPARE(AudioFile::takeLog(), QStringList());
    QCOMPARE(AudioFile::read(path).texts.value(TAG_TITLE), QStringLiteral("Nächster, längerer Titel"));
    QVERIFY(AudioFile::properties(path).duration > 2900);
}
} // namespace

/// Tags made by hand, as other programs leave them: an edit of the title keeps the bytes of all the rest.
class TestTagBytes : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { Playing::chooseOutput(QStringLiteral("null")); }
    void everyFrameOfId3Stays_data();
    void everyFrameOfId3Stays();
    void framesAreReadAsTheirTagIsPacked();
    void aPackedFrameStaysPacked();
    void sizesOfTheOlderVersionAreUnderstood();
    void whatIsNoFrameStays();
    void theDateGoesWithItsYear();
    void aShortIdIsNotTheBeginningOfALongOne();
    void anApeTagOfAacStays();
    void theFirstVersionOfApeBecomesTheSecond();
    void aFullCommentOfId3v1Stays();
    void everyAtomStays();
    void fewBytesOfAtomsStay();
    void textsInNoKnownEncodingAreShownAndStay_data();
    void textsInNoKnownEncodingAreShownAndStay();
    void commentsThatAreNoFieldsStay();
    void whatCannotBeKeptIsNotSaved_data();
    void whatCannotBeKeptIsNotSaved();

private:
    QString file(const QString& kind, const QByteArray& content);

    QTemporaryDir m_folder;
};

QString TestTagBytes::file(const QString& kind, const QByteArray& content)
{
    const QString path = m_folder.filePath(QStringLiteral("song.") + kind);
    save(path, content);
    return path;
}

void TestTagBytes::everyFrameOfId3Stays_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("version");
    QTest::addColumn<QByteArrayList>("frames");
    const QByteArray picture("\0JPG\4\0\xFF\xD8 back", 13);
    const QByteArrayList oldest = {frame(2, "TP1", text("One")),  frame(2, "TYE", text("1999")),
                                   frame(2, "TDA", text("1503")), frame(2, "TIM", text("1030")),
                                   frame(2, "TRK", text("3/12")), frame(2, "ULT", text("engLyrics")),
                                   frame(2, "PIC", picture),      frame(2, "RVA", {"\3\x10\0\x10", 4}),
                                   frame(2, "XYZ", "unknown"),    frame(2, "TXX", text("gain"))};
    const QByteArrayList middle = {frame(3, "TPE1", {"\0One\0Two", 8}),
                                   frame(3, "TYER", text("2012")),
                                   frame(3, "TDAT", text("1503")),
                                   frame(3, "TIME", text("1030")),
                                   frame(3, "TRDA", text("June")),
                                   frame(3, "TSIZ", text("12345")),
                                   frame(3, "TRCK", text("3/12")),
                                   frame(3, "RVAD", {"\3\x10\0\x10\0\x10", 6}),
                                   frame(3, "EQUA", {"\x10\x80\x10\0", 4}),
                                   frame(3, "IPLS", text("producer")),
                                   frame(3, "TMOO", text("Calm")),
                                   frame(3, "XALT", "to be dropped", {"\x80\0", 2}),
                                   frame(3, "XENC", "encrypted", {"\0\x40", 2})};
    const QByteArrayList newest = {frame(4, "TDRC", text("2012-03-15")),
                                   frame(4, "TYER", text("1999")),
                                   frame(4, "EQU2", {"\0x\0\0\1\0\1", 7}),
                                   frame(4, "ASPI", QByteArray(12, '\0')),
                                   frame(4, "SEEK", big(1)),
                                   frame(4, "LINK", "TIT2http://x"),
                                   frame(4, "XALT", "to be dropped", {"\x40\0", 2}),
                                   frame(4, "APIC", {"\0image/jpeg\0\4\0\xFF\xD8 back", 20})};
    for (const char* kind : {"mp3", "aac", "wav"}) {
        QTest::addRow("%s 2.2", kind) << QString::fromLatin1(kind) << 2 << oldest;
        QTest::addRow("%s 2.3", kind) << QString::fromLatin1(kind) << 3 << middle;
        QTest::addRow("%s 2.4", kind) << QString::fromLatin1(kind) << 4 << newest;
    }
}

void TestTagBytes::everyFrameOfId3Stays()
{
    QFETCH(QString, kind);
    QFETCH(int, version);
    QFETCH(QByteArrayList, frames);
    const QByteArray tag = id3v2(version, frames);
    const QByteArray tone = contentOf(Fixtures::tone(kind));
    const QString path = file(kind, kind == QLatin1String("wav") ? wavWith(chunk("ID3 ", tag)) : tag + tone);
    editTitle(path);
    const QByteArray after = contentOf(path);
    QVERIFY(after.contains(QByteArray("ID3") + char(version)));
    QVERIFY(after.contains(frames.join())); // whole, and in their order
}

void TestTagBytes::framesAreReadAsTheirTagIsPacked()
{
    // A zero stands behind every byte that could be taken for the start of the music.
    const QByteArray body("\0data\xFF\xE0\xFF\0more", 13);
    QByteArray spread = body;
    spread.replace("\xFF", QByteArray("\xFF\0", 2));
    const QByteArray tone = contentOf(Fixtures::tone(QStringLiteral("mp3")));
    const QByteArray old = frame(3, "PRIV", body);
    QByteArray spreadFrame = old;
    spreadFrame.replace("\xFF", QByteArray("\xFF\0", 2));
    const QString path = file(QStringLiteral("mp3"), id3v2(3, {spreadFrame}, char(0x80)) + tone);
    editTitle(path);
    QVERIFY(contentOf(path).contains(old));
    // In the newest version each frame says so itself.
    const QString newest =
        file(QStringLiteral("mp3"), id3v2(4, {frame(4, "PRIV", spread, {"\0\2", 2})}, char(0x80)) + tone);
    editTitle(newest);
    QVERIFY(contentOf(newest).contains(frame(4, "PRIV", spread, {"\0\2", 2})));
}

void TestTagBytes::aPackedFrameStaysPacked()
{
    const QByteArray packed = frame(3, "TPE1", big(4) + qCompress(text("Singer")).mid(4), {"\0\x80", 2});
    const QString path =
        file(QStringLiteral("mp3"), id3v2(3, {packed}) + contentOf(Fixtures::tone(QStringLiteral("mp3"))));
    editTitle(path);
    QVERIFY(contentOf(path).contains(packed));
}

void TestTagBytes::sizesOfTheOlderVersionAreUnderstood()
{
    const QByteArray body = QByteArray(300, 'x');
    const QByteArray wrong = "PRIV" + big(300) + QByteArray(2, '\0') + body;
    const QString path = file(QStringLiteral("mp3"), id3v2(4, {wrong, frame(4, "TPE1", text("Singer"))}) +
                                                         contentOf(Fixtures::tone(QStringLiteral("mp3"))));
    editTitle(path);
    QVERIFY(contentOf(path).contains(frame(4, "PRIV", body) + frame(4, "TPE1", text("Singer"))));
}

void TestTagBytes::whatIsNoFrameStays()
{
    const QByteArray rubbish = "no frame, but someone's";
    const QString path = file(QStringLiteral("mp3"), id3v2(3, {frame(3, "TPE1", text("Singer")), rubbish}) +
                                                         contentOf(Fixtures::tone(QStringLiteral("mp3"))));
    editTitle(path);
    QVERIFY(contentOf(path).contains(rubbish));
    QCOMPARE(AudioFile::read(path).texts.value(TAG_ARTIST), QStringLiteral("Singer"));
}

void TestTagBytes::theDateGoesWithItsYear()
{
    const QByteArrayList frames = {frame(3, "TYER", text("2012")), frame(3, "TDAT", text("1503")),
                                   frame(3, "TRDA", text("June"))};
    const QString path =
        file(QStringLiteral("mp3"), id3v2(3, frames) + contentOf(Fixtures::tone(QStringLiteral("mp3"))));
    QCOMPARE(AudioFile::write(path, {{TAG_YEAR, QStringLiteral("1987")}}), 0);
    QCOMPARE(AudioFile::read(path).texts.value(TAG_YEAR), QStringLiteral("1987"));
    const QByteArray after = contentOf(path);
    QVERIFY(after.contains(frame(3, "TYER", text("1987")) + frames.last()));
    QVERIFY(!after.contains("TDAT"));
}

void TestTagBytes::aShortIdIsNotTheBeginningOfALongOne()
{
    // "TCO" is the genre of the oldest version; composer and copyright begin with it in the others.
    const QByteArrayList rest = {frame(3, "TCOM", text("Composer")), frame(3, "TCOP", text("2012 Someone"))};
    const QByteArray filledUp = frame(3, "TCO", text("Rock")).insert(3, '\0');
    const QString path = file(QStringLiteral("mp3"), id3v2(3, QByteArrayList{filledUp} + rest) +
                                                         contentOf(Fixtures::tone(QStringLiteral("mp3"))));
    QCOMPARE(AudioFile::write(path, {{TAG_GENRE, QStringLiteral("Jazz")}}), 0);
    QCOMPARE(AudioFile::read(path).texts.value(TAG_GENRE), QStringLiteral("Jazz"));
    const QByteArray after = contentOf(path);
    QVERIFY(after.contains(frame(3, "TCON", text("Jazz")) + rest.join()));
    QVERIFY(!after.contains("Rock"));
}

void TestTagBytes::anApeTagOfAacStays()
{
    const QByteArrayList rare = {apeItem("Artist", {"One\0Two", 7}),
                                 apeItem("Composer", "Composer"),
                                 apeItem("REPLAYGAIN_TRACK_GAIN", "-6 dB"),
                                 apeItem("Lyrics", "La la la"),
                                 apeItem("Track", "3/12"),
                                 apeItem("Year", "2012-03-15"),
                                 apeItem("Cover Art (Front)", {"c.jpg\0\xFF\xD8 front", 14}, 2)};
    const QByteArray id3v1 = "TAG" + QByteArray(125, '\0');
    for (const QByteArray& end : {QByteArray(), id3v1}) {
        const QString path =
            file(QStringLiteral("aac"), contentOf(Fixtures::tone(QStringLiteral("aac"))) +
                                            apeTag(QByteArrayList{apeItem("Title", "Old")} + rare) + end);
        editTitle(path);
        QVERIFY(contentOf(path).contains(rare.join()));
        QCOMPARE(AudioFile::read(path).picture, QByteArray("\xFF\xD8 front"));
        const Playing::Player player = Playing::opened(path);
        QVERIFY(Playing::reaches(*player, PLAYER_STATE_PAUSED));
        player->Seek(2500);
        player->Play();
        QVERIFY(Playing::reaches(*player, PLAYER_STATE_FINISHED));
    }
}

void TestTagBytes::theFirstVersionOfApeBecomesTheSecond()
{
    const QByteArray body = apeItem("Artist", "Caf\xE9") + apeItem("Lyrics", "La la la");
    const QByteArray tag = body + "APETAGEX" + little(1000) + little(quint32(body.size()) + 32) + little(2) +
                           little(0) + QByteArray(8, '\0');
    const QString path = file(QStringLiteral("mp3"), contentOf(Fixtures::tone(QStringLiteral("mp3"))) + tag);
    editTitle(path);
    QVERIFY(contentOf(path).contains(apeItem("Artist", cafe().toUtf8()) + apeItem("Lyrics", "La la la")));
    QCOMPARE(AudioFile::read(path).texts.value(TAG_ARTIST), cafe());
}

void TestTagBytes::aFullCommentOfId3v1Stays()
{
    QByteArray tag = "TAG" + QByteArray(94, '\0') + "a comment of thirty characters" + '\x11';
    QCOMPARE(tag.size(), 128);
    const QString path = file(QStringLiteral("mp3"), contentOf(Fixtures::tone(QStringLiteral("mp3"))) + tag);
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("New")}, {TAG_TRACK, QStringLiteral("7")}}),
             0);
    tag.replace(3, 3, "New");
    QVERIFY(contentOf(path).endsWith(tag));
    QCOMPARE(AudioFile::read(path).texts.value(TAG_TRACK), QStringLiteral("7"));
}

void TestTagBytes::everyAtomStays()
{
    const QString path = Fixtures::copyTone(QStringLiteral("m4a"), m_folder.path());
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("Old")}, {TAG_ARTIST, QStringLiteral("A")}}),
             0);
    const QByteArray atoms =
        atom("XYZW", dataAtom(0, "binary")) + atom("sdur", dataAtom(0, {"\0\0\1\2", 4})) +
        atom("utf6", dataAtom(2, {"\0w\0i\0d\0e", 8})) +
        atom("\xA9wrt", dataAtom(1, "One") + dataAtom(1, "Two")) + atom("tmpo", dataAtom(21, {"\0\x78", 2})) +
        atom("----", atom("mean", big(0) + "com.apple.iTunes") + atom("name", big(0) + "gain") +
                         dataAtom(1, "-6 dB"));
    addAtoms(path, atoms);
    editTitle(path);
    QVERIFY(contentOf(path).contains(atoms));
    QCOMPARE(AudioFile::read(path).texts.value(TAG_ARTIST), QStringLiteral("A"));
}

void TestTagBytes::fewBytesOfAtomsStay()
{
    const QString path = Fixtures::copyTone(QStringLiteral("m4a"), m_folder.path());
    QCOMPARE(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("Old")}}), 0);
    const QByteArray before = contentOf(path);
    const QByteArray small = atom("XYZW", dataAtom(0, "b"));
    addAtoms(path, small);
    editTitle(path);
    editTitle(path);
    QVERIFY(contentOf(path).contains(small));
}

void TestTagBytes::textsInNoKnownEncodingAreShownAndStay_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArrayList>("kept");
    const auto tone = [](const char* kind) { return contentOf(Fixtures::tone(QLatin1String(kind))); };
    const QByteArrayList entries = {chunk("IART", {"Caf\xE9\0", 5}), chunk("ICMT", {"B\xE9la\0", 5})};
    QTest::newRow("wav") << "wav" << wavWith(chunk("LIST", "INFO" + entries.join())) << entries;
    const QByteArrayList frames = {frame(4, "TPE1", "\3Caf\xE9"), frame(4, "TCOM", "\3B\xE9la"),
                                   frame(4, "USLT", "\3eng" + QByteArray(1, '\0') + "L\xE9")};
    QTest::newRow("mp3") << "mp3" << id3v2(4, frames) + tone("mp3") << frames;
    const QByteArrayList items = {apeItem("Artist", "Caf\xE9"), apeItem("Composer", "B\xE9la")};
    QTest::newRow("ape") << "ape" << tone("ape") + apeTag(items) << items;
    const QByteArrayList fields = {field("ARTIST=Caf\xE9"), field("COMPOSER=B\xE9la")};
    QTest::newRow("flac") << "flac" << flacWith(comment(fields)) << fields;
    const QByteArray front = id3v2(4, {frame(4, "TALB", text("Front"))});
    QTest::newRow("flac behind two tags") << "flac" << front + front + flacWith(comment(fields)) << fields;

    QTemporaryDir folder;
    const QString ogg = Fixtures::copyTone(QStringLiteral("ogg"), folder.path());
    {
        TagLib::Ogg::Vorbis::File file(QFile::encodeName(ogg).constData());
        const QByteArray packet = "\x03vorbis" + comment(fields) + '\1';
        file.setPacket(1, TagLib::ByteVector(packet.constData(), unsigned(packet.size())));
        file.TagLib::Ogg::File::save();
    }
    QTest::newRow("ogg") << "ogg" << contentOf(ogg) << fields;

    const QString m4a = Fixtures::copyTone(QStringLiteral("m4a"), folder.path());
    AudioFile::write(m4a, {{TAG_TITLE, QStringLiteral("Old")}});
    const QByteArrayList atoms = {atom("\xA9"
                                       "ART",
                                       dataAtom(1, "Caf\xE9")),
                                  atom("\xA9wrt", dataAtom(1, "B\xE9la"))};
    addAtoms(m4a, atoms.join());
    QTest::newRow("m4a") << "m4a" << contentOf(m4a) << atoms;
}

void TestTagBytes::textsInNoKnownEncodingAreShownAndStay()
{
    QFETCH(QString, kind);
    QFETCH(QByteArray, content);
    QFETCH(QByteArrayList, kept);
    const QString path = file(kind, content);
    QCOMPARE(AudioFile::read(path).texts.value(TAG_ARTIST), cafe());
    editTitle(path);
    QVERIFY(contentOf(path).contains(kept.join()));
    QCOMPARE(AudioFile::read(path).texts.value(TAG_ARTIST), cafe());
    // What is shown can be handed back, and edited.
    QCOMPARE(AudioFile::write(path, AudioFile::read(path).texts), 0);
    QVERIFY(contentOf(path).contains(kept.join()));
    QCOMPARE(AudioFile::write(path, {{TAG_ARTIST, QStringLiteral("Ñandú")}}), 0);
    QCOMPARE(AudioFile::read(path).texts.value(TAG_ARTIST), QStringLiteral("Ñandú"));
    QVERIFY(contentOf(path).contains(kept.last()));
}

void TestTagBytes::commentsThatAreNoFieldsStay()
{
    const QByteArrayList fields = {field("ODD"), field("=nameless"), field("N\xC4ME=value"),
                                   field("ARTIST=One"), field("artist=Two")};
    const QString path = file(QStringLiteral("flac"), flacWith(comment(fields)));
    editTitle(path);
    QVERIFY(contentOf(path).contains(fields.join()));
}

void TestTagBytes::whatCannotBeKeptIsNotSaved_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QByteArray>("content");
    const QByteArray mp3 = contentOf(Fixtures::tone(QStringLiteral("mp3")));
    QTest::newRow("a version of ID3 to come") << "mp3" << id3v2(5, {frame(4, "TPE1", text("Singer"))}) + mp3;
    QByteArray ape = apeTag({apeItem("Artist", "Singer"), apeItem("Composer", "Someone")});
    ape.replace(32, 4, little(7000)); // longer than the tag
    QTest::newRow("a damaged APE tag") << "mp3" << mp3 + ape;
    QByteArray fields = comment({field("ARTIST=One"), field("COMPOSER=Two")});
    fields.replace(14, 4, little(7000));
    QTest::newRow("a damaged comment") << "flac" << flacWith(fields);
}

void TestTagBytes::whatCannotBeKeptIsNotSaved()
{
    QFETCH(QString, kind);
    QFETCH(QByteArray, content);
    const QString path = file(kind, content);
    AudioFile::takeLog();
    QVERIFY(AudioFile::write(path, {{TAG_TITLE, QStringLiteral("New")}}) != 0);
    const QStringList log = AudioFile::takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY(log.first().contains(path));
    QCOMPARE(contentOf(path), content);
}

QTEST_GUILESS_MAIN(TestTagBytes)
#include "tst_tagbytes.moc"
