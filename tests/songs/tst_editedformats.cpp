#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "fixtures.h"
#include "patience.h"
#include "songeditingfixture.h"
#include "sound.h"

#include <QHash>
#include <QProcess>

namespace {
QByteArray outputOf(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(patience) ? process.readAllStandardOutput() : QByteArray();
}

/// The tags as FFmpeg names them, in small letters, whether they belong to the file or its track.
QHash<QString, QString> independentTags(const QString& path)
{
    const Sound::Told told = Sound::toldOf(path);
    QHash<QString, QString> tags;
    const auto take = [&tags](const QHash<QString, QString>& from) {
        for (auto tag = from.begin(); tag != from.end(); ++tag) {
            QString name = tag.key().toLower();
            if (name == QLatin1String("wm/year") || name == QLatin1String("year"))
                name = QStringLiteral("date");
            tags.insert(name, tag.value());
        }
    };
    take(told.ofTrack);
    take(told.ofFile);
    return tags;
}

QByteArray independentPicture(const QString& path)
{
    return outputOf(QStringLiteral("ffmpeg"),
                    {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-i"), path,
                     QStringLiteral("-map"), QStringLiteral("0:v:0"), QStringLiteral("-c"),
                     QStringLiteral("copy"), QStringLiteral("-f"), QStringLiteral("image2pipe"),
                     QStringLiteral("-")});
}
} // namespace

/// What an edit leaves in a file of each format, as other programs read it.
class TestEditedFormats : public SongEditingFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { start(); }

    void everyFormatTakesAnEdit_data() { everyFormat(); }
    void everyFormatTakesAnEdit();
    void everyFormatTakesAnyNumber_data() { everyFormat(); }
    void everyFormatTakesAnyNumber();
    void whatWasHandedBackUnchangedStays_data() { everyFormat(); }
    void whatWasHandedBackUnchangedStays();
};

void TestEditedFormats::everyFormatTakesAnEdit()
{
    QFETCH(QString, kind);
    const auto song = songOn(Fixtures::copyTone(kind, m_folder.path()));
    const QByteArray picture = Fixtures::jpeg(100, 100, 1);
    SongEdit edit = sampleEdit();
    edit.newCoverPath = Fixtures::saveBytes(picture, m_folder.filePath("picture.jpg"));
    const SongEditing::Outcome outcome = SongEditing::apply(*song, edit);
    QVERIFY(outcome.coverChanged && outcome.coverUsed);

    const AudioFile::Content ours = AudioFile::read(song->localInfo->filePath);
    const QHash<QString, QString> theirs = independentTags(song->localInfo->filePath);
    const struct
    {
        int type;
        const char* name;
        QString value;
    } fields[] = {{TAG_TITLE, "title", edit.title}, {TAG_ARTIST, "artist", edit.artist},
                  {TAG_ALBUM, "album", edit.album}, {TAG_GENRE, "genre", edit.genre},
                  {TAG_YEAR, "date", "2012"},       {TAG_TRACK, "track", "3"}};
    QStringList row;
    for (const auto& field : fields) {
        const QString other = theirs.value(QLatin1String(field.name));
        QCOMPARE(ours.texts.value(field.type), field.value);
        QCOMPARE(other, field.value);
        row.append(QStringLiteral("%1: %2 | %3")
                       .arg(QLatin1String(field.name), ours.texts.value(field.type), other));
    }
    QCOMPARE(ours.picture, picture);
    QCOMPARE(independentPicture(song->localInfo->filePath), picture);
    row.append(QStringLiteral("picture: %1 | %1 bytes").arg(picture.size()));
    qInfo("%-5s read back by us | by FFmpeg: %s", qPrintable(kind),
          qUtf8Printable(row.join(QStringLiteral("; "))));
}

/// Whatever the editors let through, from their least to their greatest.
void TestEditedFormats::everyFormatTakesAnyNumber()
{
    QFETCH(QString, kind);
    const auto song = songOn(Fixtures::copyTone(kind, m_folder.path()));
    SongEdit edit = sampleEdit();
    SongEditing::apply(*song, edit);
    const struct
    {
        int year;
        int track;
    } numbers[] = {{987, 9999}, {9999, 1}, {5, 10}, {12, 255}, {1000, 256}, {1, 999}};
    for (const auto& number : numbers) {
        edit.year = number.year;
        edit.trackNumber = number.track;
        SongEditing::apply(*song, edit);
        QHash<int, QString> ours = AudioFile::read(song->localInfo->filePath).texts;
        QCOMPARE(ours.value(TAG_YEAR), QString::number(number.year));
        QCOMPARE(ours.value(TAG_TRACK), QString::number(number.track));
        const QHash<QString, QString> theirs = independentTags(song->localInfo->filePath);
        QCOMPARE(theirs.value(QStringLiteral("date")).toInt(), number.year);
        QCOMPARE(theirs.value(QStringLiteral("track")).toInt(), number.track);
        edit.title += QLatin1Char('+'); // what is handed back is not lost
        SongEditing::apply(*song, edit);
        ours = AudioFile::read(song->localInfo->filePath).texts;
        QCOMPARE(ours.value(TAG_TITLE), edit.title);
        QCOMPARE(ours.value(TAG_YEAR), QString::number(number.year));
    }
}

/// The whole song goes through the editors; of what was not typed anew the file keeps its own form.
void TestEditedFormats::whatWasHandedBackUnchangedStays()
{
    QFETCH(QString, kind);
    const auto song = songOn(Fixtures::copyTone(kind, m_folder.path()));
    SongEdit edit = sampleEdit();
    SongEditing::apply(*song, edit);
    const QHash<QString, QString> before = independentTags(song->localInfo->filePath);
    edit.title = QStringLiteral("New");
    SongEditing::apply(*song, edit);
    QHash<QString, QString> after = independentTags(song->localInfo->filePath);
    QCOMPARE(after.value(QStringLiteral("title")), QStringLiteral("New"));
    after.insert(QStringLiteral("title"), before.value(QStringLiteral("title")));
    QCOMPARE(after, before);
}

QTEST_MAIN(TestEditedFormats)
#include "tst_editedformats.moc"
