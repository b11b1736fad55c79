// Arbitrary bytes as the name of a file, and as names of what lies beside it: only what a save can have left
// is taken for that.

#include "base/newfilename.h"
#include "promise.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view all(reinterpret_cast<const char*>(data), size);
    const std::string name(all.substr(0, all.find('\n')));
    const std::string made = base::newFileNameFor(name);
    promise(base::isNewFileNameFor(made, name), "what is made is known again");
    promise(!base::isNewFileNameFor(made, name + 'x'), "another file's is not");
    promise(made != base::newFileNameFor(name), "no name is made twice");

    std::string_view entries = all.substr(std::min(name.size() + 1, all.size()));
    while (!entries.empty()) {
        const std::string_view entry = entries.substr(0, entries.find('\n'));
        entries.remove_prefix(std::min(entry.size() + 1, entries.size()));
        // Nobody guesses the hash: what stands behind it counts with the right one as well.
        const std::string hashed = made.substr(0, made.rfind('-') + 1) + std::string(entry);
        for (const std::string_view one : {entry, std::string_view(hashed)})
            promise(!base::isNewFileNameFor(one, name) ||
                        (one.size() == made.size() && one.substr(0, 11) == ".melodrift-" &&
                         one.find_last_of("./\\") == 0),
                    "what is removed has a name that we make");
    }
    return 0;
}
