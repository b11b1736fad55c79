// Deletes one track at the very moment when others do, for the test of programs that begin at once:
//     library_starter LIBRARY GATE IDENTIFIER
// Says "ready" when it waits for the gate, a file that the test holds locked; then the answer, "1" or "0".
// It ends with its input, and does not close the library.
#include "audiocore/log.h"
#include "librarycalls.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

int main(int argc, char* argv[])
{
    if (argc != 4)
        return 2;
    SetAudioCoreLogSink([](const char*) {});
    setvbuf(stdout, nullptr, _IOLBF, 0);
    setITunesLibraryOption(argv[1]);
    LibraryCalls::read();
    const int gate = ::open(argv[2], O_RDONLY | O_CLOEXEC);
    std::puts("ready");
    ::flock(gate, LOCK_SH);
    std::printf("%d\n", int(deleteMusic(std::strtoull(argv[3], nullptr, 16))));
    while (std::getchar() != EOF) {
    }
    std::_Exit(0);
}
