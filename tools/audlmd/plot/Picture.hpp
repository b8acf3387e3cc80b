#pragma once

#include <cairo.h>

#include <functional>
#include <string>

namespace audlmd::plot {

enum class PictureKind { png, svg };

/// In points; a PNG has `pixelsPerPoint` pixels for each in both directions.
struct PictureSize {
    double width;
    double height;
    double pixelsPerPoint;
};

/// What `draw` draws, as the content of a file. Throws std::runtime_error where that takes more memory than
/// there is.
std::string encodePicture(PictureKind kind, const PictureSize& size,
                          const std::function<void(cairo_t*)>& draw);

} // namespace audlmd::plot
