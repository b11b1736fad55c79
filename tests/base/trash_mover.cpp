// Moves files into the trash and back without end, for the test that kills it:
//     trash_mover FOLDER FILES SEED
// The files are named "0" to FILES - 1. Says each answered move in a line: "T number" or "R number".
#include "base/platform.h"
#include "base/trash.h"

#include <cstdio>
#include <optional>
#include <random>
#include <string>
#include <vector>

int main(int argc, char* argv[])
{
    if (argc != 4)
        return 2;
    setvbuf(stdout, nullptr, _IOLBF, 0);
    const std::string folder = argv[1];
    std::vector<std::optional<base::TrashedFile>> taken(std::stoul(argv[2]));
    std::mt19937 random(unsigned(std::stoul(argv[3])));
    for (;;) {
        base::Trash trash;
        std::string error;
        for (int i = 0; i < 200; ++i) {
            const std::size_t number = random() % taken.size();
            const std::string path = folder + '/' + std::to_string(number);
            base::FileState state;
            base::TrashedFile file;
            if (taken[number] && trash.restore(*taken[number], error) == base::Trash::Restoring::Done) {
                taken[number].reset();
                std::printf("R %zu\n", number);
            } else if (!taken[number] && base::stateOf(path, state) &&
                       trash.take(path, state, file, error) == base::Trash::Taking::Done) {
                taken[number] = file;
                std::printf("T %zu\n", number);
            } else {
                std::fprintf(stderr, "%zu: %s\n", number, error.c_str());
                return 1;
            }
        }
    }
}
