#include "tools/audlmd/options/AutomationFile.hpp"

#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/options/Parsers.hpp"

#include <cerrno>
#include <cmath>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace audlmd::command {

namespace {

AutomationPoint pointIn(std::string_view line, const std::string& where) {
    const std::size_t comma = line.find(',');
    if (comma == std::string_view::npos)
        throw CommandError(where + ": should be a time, a comma and decibels", ExitStatus::input);
    try {
        return {TimeValue::parse(words::trimmed(line.substr(0, comma)), where),
                parseLevel(words::trimmed(line.substr(comma + 1)), where)};
    } catch (const CommandError& error) {
        throw CommandError(error.what(), ExitStatus::input);
    }
}

} // namespace

std::vector<AutomationPoint> readAutomationFile(const std::filesystem::path& path) {
    std::ifstream file(path);
    if (!file)
        throw CommandError("'" + path.string() +
                               "' cannot be read: " + std::generic_category().message(errno),
                           ExitStatus::input);
    std::vector<AutomationPoint> points;
    bool headings = true;
    std::string text;
    for (int number = 1; std::getline(file, text); ++number) {
        const std::string_view line = words::trimmed(std::string_view(text).substr(0, text.find('#')));
        if (line.empty())
            continue;
        // Only the first line that says something may be a line of headings.
        const bool first = std::exchange(headings, false);
        if (first && line.find_first_of("0123456789") == std::string_view::npos)
            continue;
        points.push_back(pointIn(line, words::quoted(path.string()) + " line " + std::to_string(number)));
    }
    if (file.bad() || points.empty())
        throw CommandError("'" + path.string() +
                               "' holds no automation; write lines of a time, a comma and decibels",
                           ExitStatus::input);
    return points;
}

std::vector<LevelNode> levelNodes(const std::vector<AutomationPoint>& points, int sampleRate, double speed) {
    std::vector<LevelNode> nodes;
    nodes.reserve(points.size());
    for (const AutomationPoint& point : points) {
        // Times are heard, positions are source samples: at twice the speed a time lies twice as far into the
        // range.
        const double position = std::round(static_cast<double>(point.time.samples(sampleRate)) * speed);
        if (!(position < 0x1p62))
            throw CommandError(point.time.option() + ": " + point.time.text() + " is too late to be counted",
                               ExitStatus::input);
        nodes.push_back({static_cast<std::int64_t>(position), point.uValue});
        if (nodes.size() > 1 && nodes.back().position < nodes[nodes.size() - 2].position)
            throw CommandError(point.time.option() + ": " + point.time.text() +
                                   " comes after a later one; write the times in order",
                               ExitStatus::input);
    }
    return nodes;
}

} // namespace audlmd::command
