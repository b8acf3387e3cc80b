#pragma once

#include "tools/plot/Figure.hpp"

#include <filesystem>

namespace audlmd::command {

/// The kind of picture that the extension names. Throws CommandError for another extension. Call this before
/// long work, so that a wrong name is refused at once.
plot::PictureKind pictureKindOf(const std::filesystem::path& path);

/// Draws a figure into a file, which appears whole or not at all. Throws CommandError.
void writePicture(const plot::Figure& figure, const std::filesystem::path& path);

} // namespace audlmd::command
