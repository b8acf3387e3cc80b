#include "tools/audlmd/files/MarkersCsv.hpp"

#include "host/words/Text.hpp"
#include "host/words/Times.hpp"

#include <cstdio>

namespace audlmd::command {
namespace {

/// A field in quotes, which are doubled inside.
std::string field(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : words::utf8(text))
        quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + "\"";
}

/// To the microsecond, with a point in any locale: seconds and millionths apart.
std::string decimalSeconds(std::int64_t samples, int sampleRate) {
    const std::int64_t millionths = samples % sampleRate * 1'000'000 / sampleRate;
    char text[40];
    std::snprintf(text, sizeof text, "%lld.%06lld", static_cast<long long>(samples / sampleRate),
                  static_cast<long long>(millionths));
    return text;
}

} // namespace

std::string markersCsv(const std::vector<Marker>& markers, const MarkerClock& clock) {
    std::string csv = "sample,seconds,timecode,length,name,comment\r\n";
    for (const Marker& marker : markers) {
        const std::int64_t time = clock.timeReference + marker.position;
        const std::string timecode = words::isFrameRate(clock.frameRate) && time >= 0
                                         ? words::timecode(time, clock.sampleRate, clock.frameRate)
                                         : words::clock(time, clock.sampleRate);
        csv += std::to_string(marker.position) + "," + decimalSeconds(marker.position, clock.sampleRate) +
               "," + timecode + "," + std::to_string(marker.length) + "," + field(marker.name) + "," +
               field(marker.comment) + "\r\n";
    }
    return csv;
}

} // namespace audlmd::command
