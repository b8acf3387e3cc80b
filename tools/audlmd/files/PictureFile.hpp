#pragma once

#include "tools/audlmd/files/OutputPath.hpp"
#include "tools/plot/Figure.hpp"

#include <filesystem>

namespace audlmd::command {

/// The kind of picture that the extension names. Throws CommandError for another extension. Call this before
/// long work, so that a wrong name is refused at once.
plot::PictureKind pictureKindOf(const std::filesystem::path& path);

/// Draws a figure into a file. Throws CommandError.
void writePicture(const plot::Figure& figure, const OutputPath& target);

} // namespace audlmd::command
