#include "tools/audlmd/files/NamelessFile.hpp"

#include "tools/audlmd/files/TemporaryFile.hpp"

#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace audlmd::command {

int makeNamelessFile(const std::filesystem::path& folder) {
    const int nameless = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (nameless >= 0)
        return nameless;
    // Not every file system makes such files: there the name is taken away at once.
    std::string name = (folder / ".audlmd-XXXXXX").string();
    const EndingSignalsBlocked blocked;
    const int named = mkostemp(name.data(), O_CLOEXEC);
    if (named >= 0)
        unlink(name.c_str());
    return named;
}

} // namespace audlmd::command
