#pragma once

#include "host/mix/MixReport.hpp"
#include "host/mix/Timeline.hpp"
#include "tools/audlmd/mix/OutputCourse.hpp"
#include "tools/audlmd/mix/picture/TimelineSketch.hpp"

#include <nlohmann/json_fwd.hpp>

#include <functional>
#include <string>

namespace audlmd::command {

/// What a page to review a mix shows.
struct PageSubject {
    /// With all notes.
    const Timeline& timeline;
    const MixReport& report;
    /// Null where nothing was mixed.
    const OutputCourse* course = nullptr;
    /// Whether the output's format clips.
    bool clips = false;
    /// What a medium is in the file system.
    std::function<std::string(const std::string& medium)> fileOf;
};

/// How many columns the sketch of a page has: so many that zooming in shows something, and so few that the
/// page stays small.
std::size_t pageColumns(const Timeline& timeline);

/// The data of the page's scripts, without the sound. The sketch has its waveforms, and its tracks are the
/// first of the timeline. Samples are the timeline's, waveforms are bytes in base 64.
nlohmann::json pageData(const PageSubject& subject, const TimelineSketch& sketch);

} // namespace audlmd::command
