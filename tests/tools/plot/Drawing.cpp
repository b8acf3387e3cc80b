#include "tests/tools/plot/Drawing.hpp"

#include <cairo-script.h>
#include <cairo-svg.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fstream>
#include <iterator>

namespace {

/// Null while nothing is recorded.
cairo_device_t* script = nullptr;

cairo_status_t append(void* text, const unsigned char* bytes, unsigned int count) {
    static_cast<std::string*>(text)->append(reinterpret_cast<const char*>(bytes), count);
    return CAIRO_STATUS_SUCCESS;
}

} // namespace

// Found before those of cairo.
#define REAL(function) reinterpret_cast<decltype(&(function))>(dlsym(RTLD_NEXT, #function))
extern "C" {
cairo_surface_t* cairo_svg_surface_create_for_stream(cairo_write_func_t write, void* to, double width,
                                                     double height) {
    return script == nullptr ? REAL(cairo_svg_surface_create_for_stream)(write, to, width, height)
                             : cairo_script_surface_create(script, CAIRO_CONTENT_COLOR, width, height);
}
void cairo_text_extents(cairo_t* context, const char* text, cairo_text_extents_t* extents) {
    REAL(cairo_text_extents)(context, text, extents);
    if (script == nullptr)
        return;
    cairo_matrix_t font{};
    cairo_get_font_matrix(context, &font);
    extents->x_advance = 0.6 * font.xx * static_cast<double>(std::strlen(text));
    extents->height = 0.7 * font.xx;
}
// An area of right angles, as of a waveform, is more than cairo can write. Its outline follows, and stands
// for it.
void cairo_fill_preserve(cairo_t* context) {
    if (script == nullptr)
        return REAL(cairo_fill_preserve)(context);
    cairo_script_write_comment(script, "filled:", -1);
}
void cairo_show_text(cairo_t* context, const char* text) {
    if (script == nullptr || *text == '\0')
        return REAL(cairo_show_text)(context, text);
    cairo_text_extents_t size{};
    cairo_text_extents(context, text, &size);
    double x = 0.0;
    double y = 0.0;
    cairo_get_current_point(context, &x, &y);
    cairo_new_path(context);
    cairo_rectangle(context, x, y, size.x_advance, -size.height);
    cairo_script_write_comment(script, text, -1);
    cairo_fill(context);
}
}

void audlmd::test::expectPicture(const std::string& name, const std::function<void()>& draw) {
    std::string found;
    script = cairo_script_create_for_stream(&append, &found);
    draw();
    cairo_device_destroy(script);
    script = nullptr;
    const std::string path = AUDLMD_PICTURES "/" + name + ".cairo";
    if (std::getenv("AUDLMD_REDRAW") != nullptr)
        std::ofstream(path) << found;
    std::ifstream file(path);
    EXPECT_EQ(found, std::string(std::istreambuf_iterator<char>(file), {})) << name;
}
