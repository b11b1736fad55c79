// What the names of files and folders say about songs.
#include "identify/nameguess.h"

#include <QtTest>

using audiocore::SongNames;

namespace {
void add(const char* path, const char* artist, const char* album, const char* title)
{
    QTest::newRow(path) << QString::fromUtf8(artist) << QString::fromUtf8(album) << QString::fromUtf8(title);
}

void addNames()
{
    add("/m/Ida Marlowe - Midnight Ferry.mp3", "Ida Marlowe", "", "Midnight Ferry");
    add("Ida Marlowe - Midnight Ferry", "Ida Marlowe", "", "Midnight Ferry");
    add("/m/04 - Ida Marlowe - Midnight Ferry.flac", "Ida Marlowe", "", "Midnight Ferry");
    add("/m/04. Ida Marlowe - Midnight Ferry.flac", "Ida Marlowe", "", "Midnight Ferry");
    add("/m/04 Ida Marlowe - Midnight Ferry.flac", "Ida Marlowe", "", "Midnight Ferry");
    add("/m/Ida Marlowe - 04 - Midnight Ferry.m4a", "Ida Marlowe", "", "Midnight Ferry");
    add("/m/Ida Marlowe - Paper Lanterns - Midnight Ferry.m4a", "Ida Marlowe", "Paper Lanterns",
        "Midnight Ferry");
    add("/m/Ida Marlowe - Paper Lanterns - 04 - Midnight Ferry.m4a", "Ida Marlowe", "Paper Lanterns",
        "Midnight Ferry");
    add("/m/Ida Marlowe - Paper Lanterns - 04 Midnight Ferry.m4a", "Ida Marlowe", "Paper Lanterns",
        "Midnight Ferry");
    add("/m/04 - Ida Marlowe - Paper Lanterns - Midnight Ferry.m4a", "Ida Marlowe", "Paper Lanterns",
        "Midnight Ferry");
    add("/m/Ida Marlowe – Midnight Ferry.ogg", "Ida Marlowe", "", "Midnight Ferry");
    add("/m/Ida_Marlowe_-_Midnight_Ferry.mp3", "Ida Marlowe", "", "Midnight Ferry");
    add("/m/04-ida_marlowe-midnight_ferry.mp3", "ida marlowe", "", "midnight ferry");
    add("/m/04_Ida_Marlowe_-_Midnight_Ferry.mp3", "Ida Marlowe", "", "Midnight Ferry");
    add("/m/Чайковский - Вальс.mp3", "Чайковский", "", "Вальс");
}

void addNamesInFolders()
{
    add("/m/Ida Marlowe/Paper Lanterns/04 Midnight Ferry.mp3", "Ida Marlowe", "Paper Lanterns",
        "Midnight Ferry");
    add("/m/Ida Marlowe/Paper Lanterns/04. Midnight Ferry.mp3", "Ida Marlowe", "Paper Lanterns",
        "Midnight Ferry");
    add("/m/Ida Marlowe/Paper Lanterns/4) Midnight Ferry.mp3", "Ida Marlowe", "Paper Lanterns",
        "Midnight Ferry");
    add("/m/Ida Marlowe/Paper Lanterns/104 - Midnight Ferry.mp3", "Ida Marlowe", "Paper Lanterns",
        "Midnight Ferry");
    add("/m/Ida Marlowe/Paper Lanterns/04-Midnight Ferry.mp3", "Ida Marlowe", "Paper Lanterns",
        "Midnight Ferry");
    add("/m/Ida Marlowe/Paper Lanterns/1-04 Midnight Ferry.m4a", "Ida Marlowe", "Paper Lanterns",
        "Midnight Ferry");
    add("/m/Ida_Marlowe/Paper_Lanterns/04_Midnight_Ferry.mp3", "Ida Marlowe", "Paper Lanterns",
        "Midnight Ferry");
    add("/m/Ida Marlowe/Paper Lanterns/CD 2/04 Midnight Ferry.mp3", "Ida Marlowe", "Paper Lanterns",
        "Midnight Ferry");
    add("/m/Ida Marlowe/Paper Lanterns/cd2/04 Midnight Ferry.mp3", "Ida Marlowe", "Paper Lanterns",
        "Midnight Ferry");
    add("/m/Ida Marlowe/Paper Lanterns (2012)/04 Midnight Ferry.mp3", "Ida Marlowe", "Paper Lanterns",
        "Midnight Ferry");
    add("/m/Ida Marlowe/[2012] Paper Lanterns/04 Midnight Ferry.mp3", "Ida Marlowe", "Paper Lanterns",
        "Midnight Ferry");
    add("/m/Ida Marlowe/2012 - Paper Lanterns/04 Midnight Ferry.mp3", "Ida Marlowe", "Paper Lanterns",
        "Midnight Ferry");
    add("/m/Ida Marlowe/1984/04 Midnight Ferry.mp3", "Ida Marlowe", "1984", "Midnight Ferry");
    add("/m/Pop/Ida Marlowe - Paper Lanterns/04 Midnight Ferry.mp3", "Ida Marlowe", "Paper Lanterns",
        "Midnight Ferry");
    add("/m/Pop/Ida Marlowe - 2012 - Paper Lanterns/04 Midnight Ferry.mp3", "Ida Marlowe", "Paper Lanterns",
        "Midnight Ferry");
    add("/m/Ida Marlowe/Paper Lanterns/Ida Marlowe - Midnight Ferry.mp3", "Ida Marlowe", "Paper Lanterns",
        "Midnight Ferry");
    add("C:\\m\\Ida Marlowe\\Paper Lanterns\\04 Midnight Ferry.mp3", "Ida Marlowe", "Paper Lanterns",
        "Midnight Ferry");
}

void addWordsThatLookLikeNumbers()
{
    add("/m/a/b/7 Years.mp3", "", "", "7 Years");
    add("/m/a/b/99 Balloons.mp3", "", "", "99 Balloons");
    add("/m/a/b/1999.mp3", "", "", "1999");
    add("/m/a/b/8-bit Love.mp3", "", "", "8-bit Love");
    add("/m/a/b/1-800-273-8255.mp3", "", "", "1-800-273-8255");
    add("/m/21 Sails - Harbour.mp3", "21 Sails", "", "Harbour");
    add("/m/Anti-Hero.mp3", "", "", "Anti-Hero");
}

void addTitlesAtMost()
{
    add("/m/Ida Marlowe/Paper Lanterns/Midnight Ferry.mp3", "", "", "Midnight Ferry");
    add("/m/Vol. 2 of it.mp3", "", "", "Vol. 2 of it");
    add("/04 Midnight Ferry.mp3", "", "", "Midnight Ferry");
    add("/m/04 Midnight Ferry.mp3", "", "m", "Midnight Ferry");
    add("/m/04.mp3", "", "", "04");
    add("/m/ - .mp3", "", "", "");
    add("/m/___.mp3", "", "", "");
    add("/m/.mp3", "", "", ".mp3");
    add("/", "", "", "");
    add("", "", "", "");
}
} // namespace

class TestNameGuess : public QObject
{
    Q_OBJECT

private slots:
    void aPathNamesTheSong_data();
    void aPathNamesTheSong();
};

void TestNameGuess::aPathNamesTheSong_data()
{
    QTest::addColumn<QString>("artist");
    QTest::addColumn<QString>("album");
    QTest::addColumn<QString>("title");
    addNames();
    addNamesInFolders();
    addWordsThatLookLikeNumbers();
    addTitlesAtMost();
}

void TestNameGuess::aPathNamesTheSong()
{
    QFETCH(QString, artist);
    QFETCH(QString, album);
    QFETCH(QString, title);
    const SongNames names = audiocore::namesInPath(QByteArray(QTest::currentDataTag()).toStdString());
    QCOMPARE(QString::fromStdString(names.title), title);
    QCOMPARE(QString::fromStdString(names.artist), artist);
    QCOMPARE(QString::fromStdString(names.album), album);
}

QTEST_APPLESS_MAIN(TestNameGuess)
#include "tst_nameguess.moc"
