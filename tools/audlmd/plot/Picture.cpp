#include "tools/audlmd/plot/Picture.hpp"

#include <cairo-svg.h>

#include <cmath>
#include <memory>
#include <stdexcept>

namespace audlmd::plot {
namespace {

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;
using Context = std::unique_ptr<cairo_t, decltype(&cairo_destroy)>;

cairo_status_t append(void* bytes, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(bytes)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

void require(cairo_status_t status) {
    if (status != CAIRO_STATUS_SUCCESS)
        throw std::runtime_error(std::string("cannot draw the picture: ") + cairo_status_to_string(status));
}

void drawOn(const Surface& surface, double scale, const std::function<void(cairo_t*)>& draw) {
    const Context context(cairo_create(surface.get()), &cairo_destroy);
    cairo_scale(context.get(), scale, scale);
    draw(context.get());
    require(cairo_status(context.get()));
}

std::string png(const PictureSize& size, const std::function<void(cairo_t*)>& draw) {
    const auto pixels = [&](double points) {
        return static_cast<int>(std::lround(points * size.pixelsPerPoint));
    };
    const Surface surface(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, pixels(size.width), pixels(size.height)),
        &cairo_surface_destroy);
    drawOn(surface, size.pixelsPerPoint, draw);
    std::string bytes;
    require(cairo_surface_write_to_png_stream(surface.get(), &append, &bytes));
    return bytes;
}

std::string svg(const PictureSize& size, const std::function<void(cairo_t*)>& draw) {
    std::string bytes;
    {
        const Surface surface(cairo_svg_surface_create_for_stream(&append, &bytes, size.width, size.height),
                              &cairo_surface_destroy);
        drawOn(surface, 1.0, draw);
        cairo_surface_finish(surface.get());
        require(cairo_surface_status(surface.get()));
    }
    return bytes;
}

} // namespace

std::string encodePicture(PictureKind kind, const PictureSize& size,
                          const std::function<void(cairo_t*)>& draw) {
    return kind == PictureKind::png ? png(size, draw) : svg(size, draw);
}

} // namespace audlmd::plot
