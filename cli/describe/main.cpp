// Writes the manual page of melodrift-cli and what shells complete it by, from the table of its commands:
//     describe_commands FRAME FOLDER    the frame of the manual page; where the files go
#include "cli/describe/commandtable.h"

#include <fstream>
#include <iterator>

namespace {
bool write(const std::string& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    return !text.empty() && file;
}
} // namespace

int main(int argc, char* argv[])
{
    if (argc != 3)
        return 2;
    std::ifstream file(argv[1], std::ios::binary);
    const std::string frame(std::istreambuf_iterator<char>(file), {});
    const std::string folder = argv[2] + std::string("/");
    const Describe::Command program = Describe::program();
    const bool isWritten = write(folder + "melodrift-cli.1", Describe::manual(program, frame)) &&
                           write(folder + "melodrift-cli", Describe::bashCompletion(program)) &&
                           write(folder + "_melodrift-cli", Describe::zshCompletion(program)) &&
                           write(folder + "melodrift-cli.fish", Describe::fishCompletion(program));
    return isWritten ? 0 : 1;
}
