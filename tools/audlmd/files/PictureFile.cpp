#include "tools/audlmd/files/PictureFile.hpp"

#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/files/TemporaryFile.hpp"

#include <csignal>
#include <string>

namespace audlmd::command {

plot::PictureKind pictureKindOf(const std::filesystem::path& path) {
    if (path.extension() == ".png")
        return plot::PictureKind::png;
    if (path.extension() == ".svg")
        return plot::PictureKind::svg;
    throw CommandError("'" + path.string() +
                       "': the extension names the kind of picture to write; use .png or .svg");
}

void writePicture(const plot::Figure& figure, const std::filesystem::path& path) {
    const std::string content = plot::drawFigure(figure, pictureKindOf(path));
    // Without the signal, a file that grows too large is an error of writing.
    std::signal(SIGXFSZ, SIG_IGN);
    TemporaryFile file(path);
    file.write(content);
    file.commit();
}

} // namespace audlmd::command
