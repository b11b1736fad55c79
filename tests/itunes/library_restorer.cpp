// Deletes tracks of a library and takes that back, for the test that kills it:
//     library_restorer LIBRARY IDENTIFIERS WRITTEN
// Identifiers stand behind each other, parted by commas; so many of the first ones are gone from the file
// before the others are deleted. Says "deleted" and "back" when that is answered, and waits.
#include "audiocore/log.h"
#include "itunes/takeback.h"
#include "librarycalls.h"

#include <chrono>
#include <cstdio>
#include <thread>
#include <vector>

namespace {
void nap()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

/// False when one of them stays.
bool removeAll(const QList<QByteArray>& ids)
{
    for (const QByteArray& id : ids)
        if (deleteMusic(id.toULongLong(nullptr, 16)) == 0)
            return false;
    return true;
}
} // namespace

int main(int argc, char* argv[])
{
    if (argc != 4)
        return 2;
    SetAudioCoreLogSink([](const char*) {});
    const QString library = QFile::decodeName(argv[1]);
    const QList<QByteArray> all = QByteArray(argv[2]).split(',');
    const int written = QByteArray(argv[3]).toInt();
    LibraryCalls::read(library);
    if (!removeAll(all.mid(0, written)))
        return 1;
    launchiTunes(); // does not wait for a pause
    while (QFile::exists(library + ".melodrift-journal"))
        nap();
    if (!removeAll(all.mid(written)))
        return 1;
    std::puts("deleted");
    std::fflush(stdout);
    std::vector<uint64_t> ids;
    for (const QByteArray& id : all)
        ids.push_back(id.toULongLong(nullptr, 16));
    if (takeBackDeletions(ids.data(), ids.size()) == 0)
        return 1;
    std::puts("back");
    std::fflush(stdout);
    for (;;)
        nap();
}
