#include "tools/audlmd/plot/PictureFile.hpp"

#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/TemporaryFile.hpp"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <unistd.h>

namespace audlmd::plot {

PictureKind pictureKindOf(const std::filesystem::path& path) {
    if (path.extension() == ".png")
        return PictureKind::png;
    if (path.extension() == ".svg")
        return PictureKind::svg;
    throw command::CommandError("'" + path.string() +
                                "': the extension names the kind of picture to write; use .png or .svg");
}

void writePictureFile(const std::filesystem::path& path, const std::string& content) {
    // A file that grows too large is an error of writing, and reported as such.
    std::signal(SIGXFSZ, SIG_IGN);
    command::TemporaryFile file(path);
    for (std::size_t written = 0; written < content.size();) {
        const ssize_t count = write(file.descriptor(), content.data() + written, content.size() - written);
        if (count < 0 && errno != EINTR)
            throw command::CommandError("cannot write '" + path.string() +
                                        "': " + std::generic_category().message(errno));
        written += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    file.commit();
}

} // namespace audlmd::plot
