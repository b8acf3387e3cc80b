#include "tools/audlmd/files/PictureFile.hpp"

#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/files/OpenOutput.hpp"

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

void writePicture(const plot::Figure& figure, const OutputPath& target) {
    writeOutput(target, plot::drawFigure(figure, pictureKindOf(target.path)));
}

} // namespace audlmd::command
