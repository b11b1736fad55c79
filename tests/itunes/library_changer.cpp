// Changes a library without end, for the test that kills it:
//     library_changer LIBRARY SEED
// Says each answered change in a line: "D identifier", or "E identifier name". Two edits of three put a
// picture into the song as well: cover0.jpg or cover1.jpg beside the library, by the number that ends the
// name. Some edits are taken back, which counts as an edit to the name before. A change that is refused is
// left out, for another copy may be at work.
#include "audiocore/log.h"
#include "itunes/takeback.h"
#include "librarycalls.h"

#include <QFileInfo>

#include <chrono>
#include <cstdio>
#include <random>
#include <thread>
#include <vector>

int main(int argc, char* argv[])
{
    if (argc != 3)
        return 2;
    SetAudioCoreLogSink([](const char*) {});
    setvbuf(stdout, nullptr, _IOLBF, 0);
    setITunesLibraryOption(argv[1]);
    const LibraryCalls::Reading reading = LibraryCalls::read();
    std::mt19937 random(unsigned(std::stoul(argv[2])));
    std::vector<QByteArray> ids;
    ids.reserve(std::size_t(reading.count));
    QHash<QByteArray, QByteArray> names;
    for (int i = 0; i < reading.count; ++i) {
        ids.emplace_back(reading.records[i].persistentId);
        names.insert(ids.back(), reading.records[i].name);
    }
    for (unsigned n = 0; ids.size() > 4; ++n) {
        // The first songs have media files; they are edited, the others deleted.
        const bool edits = random() % 4 == 0;
        const std::size_t at = edits ? random() % 3 : 3 + random() % (ids.size() - 3);
        const quint64 id = ids[at].toULongLong(nullptr, 16);
        LibraryCalls::Edit edit;
        edit.name = "Edit " + QByteArray(argv[2]) + '-' + QByteArray::number(n);
        if (n % 3 != 0)
            edit.cover = QFileInfo(argv[1]).absolutePath() + QString("/cover%1.jpg").arg(n % 2);
        if (edits ? LibraryCalls::edit(id, edit) != 0 : deleteMusic(id) == 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            closeITunesLibrary();
            continue;
        }
        if (edits) {
            std::printf("E %s %s\n", ids[at].constData(), edit.name.constData());
            if (random() % 3 == 0 && takeBackEdit(id) != 0)
                std::printf("E %s %s\n", ids[at].constData(), names.value(ids[at]).constData());
            else
                names.insert(ids[at], edit.name);
        } else {
            std::printf("D %s\n", ids[at].constData());
        }
        if (!edits)
            ids.erase(ids.begin() + std::ptrdiff_t(at));
        // Sometimes the changes pause, and the library is written.
        if (random() % 6 == 0)
            closeITunesLibrary();
    }
    closeITunesLibrary();
    return 0;
}
