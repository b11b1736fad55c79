#include "base/failure.h"
#include "base/filebytes.h"
#include "itunesfixture.h"
#include "library/libraryediting.h"
#include "library/libraryreading.h"
#include "library/takenpieces.h"

#include <QRandomGenerator>
#include <QtTest>

#include <algorithm>
#include <set>

using base::MemoryFile;
using itunes::LibrarySplices;
using itunes::Splice;
using itunes::TakenPieces;
using itunes::TrackSet;

namespace {
std::uint64_t id(int number)
{
    return Fixtures::itunesTrack(number).persistentId;
}

/// A library in memory, which is written as a file is.
class Library
{
public:
    explicit Library(const QByteArray& bytes) : m_file(bytes.toStdString()) { m_taken.begin(m_state); }

    const std::string& bytes() const { return m_file.bytes(); }
    TakenPieces& taken() { return m_taken; }
    std::size_t countOf(const TrackSet& tracks) const { return m_taken.splicesFor(tracks).size(); }

    void change(const itunes::TrackChanges& changes)
    {
        base::Failure failure;
        LibrarySplices splices;
        QVERIFY(itunes::findSplices(m_file, changes, splices, failure));
        write(splices);
        const base::FileState before = m_state;
        m_taken.follow(before, splices.all, contents());
    }
    void remove(const TrackSet& tracks)
    {
        itunes::TrackChanges changes;
        for (const std::uint64_t track : tracks)
            changes[track].deleted = true;
        change(changes);
    }
    void putBack(const TrackSet& tracks)
    {
        LibrarySplices splices;
        splices.all = m_taken.splicesFor(tracks);
        QVERIFY(!splices.all.empty());
        write(splices);
        m_taken.putBack(tracks, contents());
    }

private:
    void write(LibrarySplices& splices)
    {
        std::string error;
        MemoryFile copy{std::string()};
        QVERIFY(itunes::writeSpliced(m_file, copy, splices, error));
        m_file = copy;
    }
    itunes::LibraryContents contents()
    {
        itunes::LibraryContents contents;
        base::Failure failure;
        [&] { QVERIFY2(itunes::readContents(m_file, contents, failure), failure.text.c_str()); }();
        ++m_state.changed;
        contents.state = m_state;
        return contents;
    }

    MemoryFile m_file;
    base::FileState m_state;
    TakenPieces m_taken;
};

QByteArray document(int songs)
{
    QVector<Fixtures::ITunesTrack> tracks;
    QVector<Fixtures::ITunesPlaylist> playlists = {{"All", {}}, {"Backwards", {}}, {"Twice", {}}};
    for (int i = 0; i < songs; ++i) {
        tracks.append(Fixtures::itunesTrack(i));
        playlists[0].trackIds.append(tracks.last().trackId);
        playlists[1].trackIds.prepend(tracks.last().trackId);
        playlists[2].trackIds.append(tracks.last().trackId);
    }
    playlists[2].trackIds += playlists[2].trackIds;
    return Fixtures::itunesLibrary(tracks, playlists);
}

/// A splice that takes out so many bytes at a place.
Splice taking(std::uint64_t place, std::size_t size, std::uint64_t track)
{
    Splice splice{{place, place + size}, std::string(), track, true};
    splice.taken = std::string(size, 'x');
    return splice;
}
} // namespace

class TestTakenPieces : public QObject
{
    Q_OBJECT

private slots:
    void whatGoesTogetherComesBackTogether();
    void whatComesBackFindsItsPlaceWhateverWentSince();
    void editsMoveThePieces();
    void anotherProgramsVersionHasNoPlaces();
    void theFirstOnesGoWhenThereIsTooMuch();
    void whatIsTooMuchAtOnceIsNotKept();
};

void TestTakenPieces::whatGoesTogetherComesBackTogether()
{
    for (const TrackSet& tracks : {TrackSet{id(0)}, TrackSet{id(2)}, TrackSet{id(4)}, TrackSet{id(1), id(2)},
                                   TrackSet{id(0), id(1), id(2), id(3), id(4)}}) {
        Library library(document(5));
        const std::string before = library.bytes();
        library.remove(tracks);
        QVERIFY(library.bytes().size() < before.size());
        QCOMPARE(library.countOf(tracks), tracks.size() * 5); // the entry, and four places
        library.putBack(tracks);
        QVERIFY(library.bytes() == before);
        QCOMPARE(library.taken().bytes(), std::size_t(0));
        QCOMPARE(library.countOf(tracks), std::size_t(0));
    }
}

/// Whatever the order: what is there is what would be there had only the others gone.
void TestTakenPieces::whatComesBackFindsItsPlaceWhateverWentSince()
{
    constexpr int songs = 12;
    QRandomGenerator random(7);
    for (int round = 0; round < 40; ++round) {
        Library library(document(songs));
        std::set<int> gone;
        for (int step = 0; step < 12; ++step) {
            const bool removes = gone.empty() || (gone.size() < songs && random.bounded(2) == 0);
            TrackSet tracks;
            for (int i = 0; i < songs; ++i)
                if ((gone.count(i) == 0) == removes && random.bounded(2) == 0)
                    tracks.insert(id(i));
            if (tracks.empty())
                continue;
            removes ? library.remove(tracks) : library.putBack(tracks);
            for (int i = 0; i < songs; ++i)
                if (tracks.count(id(i)) > 0)
                    removes ? void(gone.insert(i)) : void(gone.erase(i));
            Library other(document(songs));
            TrackSet left;
            for (const int song : gone)
                left.insert(id(song));
            if (!left.empty())
                other.remove(left);
            QVERIFY(library.bytes() == other.bytes());
        }
    }
}

void TestTakenPieces::editsMoveThePieces()
{
    Library library(document(4));
    itunes::TrackChanges edits;
    edits[id(0)].edit.name = "A much longer name & more";
    edits[id(2)].edit.artist = "";
    edits[id(2)].edit.year = 1;
    Library other(document(4));
    other.change(edits);

    library.remove({id(1), id(3)});
    library.change(edits);
    library.putBack({id(3)});
    library.putBack({id(1)});
    QVERIFY(library.bytes() == other.bytes());
}

void TestTakenPieces::anotherProgramsVersionHasNoPlaces()
{
    Library library(document(4));
    library.remove({id(1)});
    base::FileState theirs;
    theirs.changed = 1000;
    QVERIFY(!library.taken().isGoodFor(theirs));
    std::vector<Splice> splices = {taking(10, 10, id(2))};
    itunes::LibraryContents after;
    after.state.changed = 1001;
    library.taken().follow(theirs, splices, after);
    QVERIFY(!library.taken().isGoodFor(after.state));
    QCOMPARE(library.taken().bytes(), std::size_t(0));
    QCOMPARE(library.countOf({id(1)}), std::size_t(0));
}

void TestTakenPieces::theFirstOnesGoWhenThereIsTooMuch()
{
    constexpr std::size_t third = itunes::mostTakenBytes / 3;
    TakenPieces taken;
    itunes::LibraryContents contents;
    taken.begin(contents.state);
    for (const int track : {1, 2, 3}) {
        // The second one twice, at both ends.
        std::vector<Splice> splices = {taking(10, third / 2, std::uint64_t(track)),
                                       taking(third, third / 2 - 1000, std::uint64_t(track))};
        taken.follow(contents.state, splices, contents);
        QVERIFY(taken.bytes() <= itunes::mostTakenBytes);
    }
    QCOMPARE(taken.splicesFor({1, 2, 3}).size(), std::size_t(6));
    std::vector<Splice> splices = {taking(0, third, 4)};
    taken.follow(contents.state, splices, contents);
    QVERIFY(taken.bytes() <= itunes::mostTakenBytes);
    QVERIFY(taken.splicesFor({1}).empty());
    QVERIFY(taken.splicesFor({1, 4}).empty());
    QCOMPARE(taken.splicesFor({2, 3, 4}).size(), std::size_t(5));
}

void TestTakenPieces::whatIsTooMuchAtOnceIsNotKept()
{
    QVector<Fixtures::ITunesTrack> tracks;
    constexpr int songs = 35;
    TrackSet ids;
    for (int i = 0; i < songs; ++i) {
        tracks.append(Fixtures::itunesTrack(i));
        tracks.last().further =
            "<key>Comments</key><string>" + QByteArray(2 * 1024 * 1024, 'c') + "</string>";
        ids.insert(id(i));
    }
    Library library(Fixtures::itunesLibrary(tracks));
    library.remove({id(3)});
    library.remove(ids);
    QVERIFY(library.bytes().size() < 10000);
    QVERIFY(library.taken().bytes() <= itunes::mostTakenBytes);
    QCOMPARE(library.countOf({id(3)}), std::size_t(1));
    QCOMPARE(library.countOf({id(4)}), std::size_t(0));
}

QTEST_GUILESS_MAIN(TestTakenPieces)
#include "tst_takenpieces.moc"
