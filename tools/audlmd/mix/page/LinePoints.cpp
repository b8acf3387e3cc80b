#include "tools/audlmd/mix/page/LinePoints.hpp"

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstddef>
#include <utility>

namespace audlmd::command {
namespace {

/// Smaller than a pixel of a clip.
constexpr double invisible = 0.01;

/// How far a point lies from the straight line between two others, in height.
double heightBesides(const LinePoint& point, const LinePoint& from, const LinePoint& to) {
    const double width = to.sample - from.sample;
    const double share = width > 0.0 ? (point.sample - from.sample) / width : 0.0;
    const auto start = static_cast<double>(from.uValue);
    return std::abs(static_cast<double>(point.uValue) - start -
                    share * (static_cast<double>(to.uValue) - start));
}

/// Leaves out what a straight line shows as well (the algorithm of Ramer, Douglas and Peucker).
std::vector<LinePoint> thinned(const std::vector<LinePoint>& line) {
    if (line.size() < 3)
        return line;
    std::vector<bool> isCorner(line.size());
    isCorner.front() = isCorner.back() = true;
    std::vector<std::pair<std::size_t, std::size_t>> stretches{{0, line.size() - 1}};
    while (!stretches.empty()) {
        const auto [first, last] = stretches.back();
        stretches.pop_back();
        std::size_t farthest = first;
        double distance = invisible;
        for (std::size_t n = first + 1; n < last; ++n)
            if (const double beside = heightBesides(line[n], line[first], line[last]); beside > distance) {
                farthest = n;
                distance = beside;
            }
        if (farthest == first)
            continue;
        isCorner[farthest] = true;
        stretches.emplace_back(first, farthest);
        stretches.emplace_back(farthest, last);
    }
    std::vector<LinePoint> corners;
    for (std::size_t n = 0; n < line.size(); ++n)
        if (isCorner[n])
            corners.push_back(line[n]);
    return corners;
}

} // namespace

std::vector<LinePoint> fadeLine(const StripSketch& strip) {
    std::vector<LinePoint> line;
    for (std::size_t border = 0; border < strip.fade.size(); ++border)
        line.push_back({strip.borders[border], strip.fade[border]});
    return thinned(line);
}

std::vector<LinePoint> levelLine(const StripSketch& strip) {
    std::vector<LinePoint> line;
    for (std::size_t column = 0; column < strip.levels.size(); ++column) {
        line.push_back({strip.borders[column], strip.levels[column].lowest});
        if (strip.levels[column].highest != strip.levels[column].lowest)
            line.push_back({strip.borders[column + 1], strip.levels[column].highest});
    }
    return thinned(line);
}

nlohmann::json pointsJson(const std::vector<LinePoint>& line) {
    nlohmann::json json = nlohmann::json::array();
    for (const LinePoint& point : line)
        json.push_back({std::llround(point.sample), std::lround(point.uValue * 1000.0F)});
    return json;
}

} // namespace audlmd::command
