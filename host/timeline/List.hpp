#pragma once

#include "host/mix/Timeline.hpp"

#include <functional>
#include <span>
#include <string>
#include <vector>

namespace audlmd::timeline {

/// What to show for a medium: the path that was found, say.
using FileText = std::function<std::string(const std::string& media)>;

/// What sounds when, as text for a terminal: a line about the whole, a table of strips, then markers, then
/// notes. Names are shortened as by words::printable(). Trap: made for people, the columns may change.
/// \snippet timeline.cpp read
std::string list(const Timeline& timeline, const FileText& fileOf);

/// Notes as lines for a terminal, in their order. Equal ones are one line with their number.
/// \snippet timeline.cpp read
std::vector<std::string> noteLines(std::span<const TimelineNote> notes, int sampleRate);

} // namespace audlmd::timeline
