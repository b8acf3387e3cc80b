#include "tests/tools/plot/Drawing.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fstream>
#include <iterator>
#include <string_view>
#include <vector>

namespace {

/// Null while nothing is recorded.
std::string* marks = nullptr;

template <class... Numbers>
std::string print(const char* format, Numbers... numbers) {
    char text[100];
    std::snprintf(text, sizeof text, format, numbers...);
    return text;
}

std::string place(cairo_t* context, double x, double y) {
    cairo_user_to_device(context, &x, &y);
    // Adding 0 turns a negative zero into a zero.
    return print(" %.1f,%.1f", std::round(10.0 * x) / 10.0 + 0.0, std::round(10.0 * y) / 10.0 + 0.0);
}

double fontSize(cairo_t* context) {
    cairo_matrix_t matrix{};
    cairo_get_font_matrix(context, &matrix);
    return matrix.xx;
}

std::string colour(cairo_t* context) {
    double red = 0.0, green = 0.0, blue = 0.0, opacity = 0.0;
    cairo_pattern_get_rgba(cairo_get_source(context), &red, &green, &blue, &opacity);
    const auto byte = [](double share) { return static_cast<unsigned int>(std::lround(255.0 * share)); };
    return print(" %02X%02X%02X", byte(red), byte(green), byte(blue)) +
           (opacity < 1.0 ? print(" %.2f", opacity) : "");
}

std::string corners(cairo_t* context) {
    cairo_path_t* const path = cairo_copy_path(context);
    std::vector<std::string> found;
    for (int at = 0; at < path->num_data; at += path->data[at].header.length)
        if (const auto [type, length] = path->data[at].header; type != CAIRO_PATH_CLOSE_PATH) {
            const auto [x, y] = path->data[at + length - 1].point;
            found.push_back((type == CAIRO_PATH_MOVE_TO && !found.empty() ? " /" : "") +
                            place(context, x, y));
        }
    cairo_path_destroy(path);
    const std::size_t shown = std::min<std::size_t>(found.size(), 24);
    std::string text = shown < found.size() ? print(" of %zu", found.size()) : "";
    for (std::size_t n = 0; n < shown; ++n)
        text += found[n * (found.size() - 1) / std::max<std::size_t>(shown - 1, 1)];
    double box[4]{}, clip[4]{};
    cairo_path_extents(context, &box[0], &box[1], &box[2], &box[3]);
    cairo_clip_extents(context, &clip[0], &clip[1], &clip[2], &clip[3]);
    if (box[0] < clip[0] || box[1] < clip[1] || box[2] > clip[2] || box[3] > clip[3])
        text += " in" + place(context, clip[0], clip[1]) + place(context, clip[2], clip[3]);
    return text;
}

std::string pixels(cairo_surface_t* image) {
    std::string text;
    const auto* const bytes = reinterpret_cast<const std::uint32_t*>(cairo_image_surface_get_data(image));
    const int count = cairo_image_surface_get_stride(image) / 4 * cairo_image_surface_get_height(image);
    for (int n = 0; n < count && count < 24; ++n)
        text += print(" %06X", bytes[n] & 0xFFFFFFU);
    return text;
}

void mark(const std::string& text) {
    if (marks != nullptr)
        *marks += text + "\n";
}

} // namespace

// Found before those of cairo.
#define REAL(function) reinterpret_cast<decltype(&(function))>(dlsym(RTLD_NEXT, #function))
extern "C" {
void cairo_stroke(cairo_t* context) {
    mark("line" + colour(context) + print(" %.1f", cairo_get_line_width(context)) +
         (cairo_get_dash_count(context) > 0 ? "-" : "") + corners(context));
    REAL(cairo_stroke)(context);
}
void cairo_fill(cairo_t* context) {
    mark("fill" + colour(context) + corners(context));
    REAL(cairo_fill)(context);
}
void cairo_fill_preserve(cairo_t* context) {
    mark("fill" + colour(context) + corners(context));
    REAL(cairo_fill_preserve)(context);
}
void cairo_paint(cairo_t* context) {
    cairo_surface_t* image = nullptr;
    if (cairo_pattern_get_surface(cairo_get_source(context), &image) == CAIRO_STATUS_SUCCESS)
        mark("image" + place(context, 0.0, 0.0) +
             place(context, cairo_image_surface_get_width(image), cairo_image_surface_get_height(image)) +
             pixels(image));
    REAL(cairo_paint)(context);
}
void cairo_show_text(cairo_t* context, const char* text) {
    double x = 0.0, y = 0.0;
    cairo_get_current_point(context, &x, &y);
    if (*text != '\0')
        mark("text" + colour(context) + print(" %.1f", fontSize(context)) + place(context, x, y) + " " +
             text);
    REAL(cairo_show_text)(context, text);
}
void cairo_text_extents(cairo_t* context, const char* text, cairo_text_extents_t* extents) {
    REAL(cairo_text_extents)(context, text, extents);
    if (marks == nullptr)
        return;
    const auto begins = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; };
    const auto characters = std::ranges::count_if(std::string_view(text), begins);
    extents->x_advance = 0.6 * fontSize(context) * static_cast<double>(characters);
    extents->height = 0.7 * fontSize(context);
}
}

void audlmd::test::expectPicture(const std::string& name,
                                 const std::function<void(const plot::Pen&)>& paint) {
    std::string found;
    cairo_surface_t* const surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, 1200, 600);
    cairo_t* const context = cairo_create(surface);
    marks = &found;
    paint(plot::Pen(context));
    marks = nullptr;
    EXPECT_EQ(cairo_status(context), CAIRO_STATUS_SUCCESS);
    cairo_destroy(context);
    cairo_surface_destroy(surface);
    const std::string path = AUDLMD_PICTURES "/" + name + ".txt";
    if (std::getenv("AUDLMD_REDRAW") != nullptr)
        std::ofstream(path) << found;
    std::ifstream file(path);
    EXPECT_EQ(found, std::string(std::istreambuf_iterator<char>(file), {})) << name;
}
