#pragma once

#include <cairo.h>

#include <filesystem>
#include <functional>

namespace audlmd::plot {

/// In points; a PNG has `pixelsPerPoint` pixels for each in both directions.
struct PictureSize {
    double width;
    double height;
    double pixelsPerPoint;
};

/// Whether the extension is one that writePicture knows: throws command::CommandError
/// where it is not, so that a command can refuse before it computes what to draw.
void requirePictureExtension(const std::filesystem::path& path);

/// Draws on a PNG or SVG, by the path's extension. The file appears, or is replaced, only once the picture is
/// whole. Throws command::CommandError.
void writePicture(const std::filesystem::path& path, const PictureSize& size,
                  const std::function<void(cairo_t*)>& draw);

} // namespace audlmd::plot
