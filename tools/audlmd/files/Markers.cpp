#include "tools/audlmd/files/Markers.hpp"

#include "host/words/Text.hpp"

#include <algorithm>
#include <cmath>

namespace audlmd::command {
namespace {

std::int64_t scaled(std::int64_t samples, double factor) {
    return std::llround(static_cast<double>(samples) * factor);
}

} // namespace

std::vector<Marker> atRate(std::vector<Marker> markers, double fromRate, int toRate) {
    if (fromRate == toRate)
        return markers;
    const double factor = toRate / fromRate;
    for (Marker& marker : markers) {
        const std::int64_t end = scaled(marker.position + marker.length, factor);
        marker.position = scaled(marker.position, factor);
        marker.length = end - marker.position;
    }
    return markers;
}

std::vector<Marker> markersIn(const RenderedPart& part, const std::vector<Marker>& markers) {
    std::vector<Marker> inside;
    for (Marker marker : markers) {
        const bool isAtEnd = marker.position == part.whole && part.to == part.whole;
        if (marker.position < part.from || (marker.position >= part.to && !isAtEnd))
            continue;
        std::int64_t end = marker.position + std::min(marker.length, part.to - marker.position);
        if (part.reverse) {
            // A moment is the one sample that it stands on.
            const std::int64_t last = std::max(end, marker.position + 1);
            end = part.from + part.to - marker.position;
            marker.position = std::max(part.from, part.from + part.to - last);
        }
        const bool isMoment = marker.length == 0;
        marker.position = scaled(marker.position - part.from, 1.0 / part.speed);
        marker.length = isMoment ? 0 : scaled(end - part.from, 1.0 / part.speed) - marker.position;
        inside.push_back(std::move(marker));
    }
    std::ranges::stable_sort(inside, {}, &Marker::position);
    return inside;
}

std::vector<SampleLoop> loopsIn(const RenderedPart& part, const std::vector<SampleLoop>& loops) {
    std::vector<SampleLoop> inside;
    for (SampleLoop loop : loops) {
        if (loop.from < part.from || loop.to > part.to || loop.from >= loop.to)
            continue;
        loop.from -= part.from;
        loop.to -= part.from;
        inside.push_back(loop);
    }
    return inside;
}

std::vector<std::string> lostMarkers(const std::vector<Marker>& found, const std::vector<Marker>& wanted) {
    std::vector<std::string> lost;
    if (found.size() < wanted.size())
        lost.push_back(words::counted(wanted.size() - found.size(), "marker"));
    else if (found != wanted)
        // Of a kind of file with moments alone.
        lost.emplace_back("lengths and comments of markers");
    return lost;
}

} // namespace audlmd::command
