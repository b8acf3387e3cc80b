#pragma once

#include "tools/audlmd/plot/Picture.hpp"

#include <filesystem>
#include <string>

namespace audlmd::plot {

/// The kind that the extension names. Throws command::CommandError for any other than .png and .svg.
PictureKind pictureKindOf(const std::filesystem::path& path);

/// Puts the content under the path, where it appears, or replaces what was there, only once it is whole.
/// Throws command::CommandError.
void writePictureFile(const std::filesystem::path& path, const std::string& content);

} // namespace audlmd::plot
