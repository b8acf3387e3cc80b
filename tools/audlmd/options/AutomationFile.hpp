#pragma once

#include "host/signal/Automation.hpp"
#include "tools/audlmd/options/Time.hpp"

#include <filesystem>
#include <vector>

namespace audlmd::command {

/// One line of an automation file.
struct AutomationPoint {
    /// In the output, as heard.
    TimeValue time;
    /// Of the mixer-style curve.
    float uValue = 0.0F;
};

/// Reads lines of `time,decibels`. Skips empty lines, comments (from a # to the end of the line) and a first
/// line of headings, which holds no digit. Throws CommandError for any other line, naming the file and the
/// line's number, and for a file without points. The times are resolved later, by levelNodes(), when the
/// sample rate is known.
std::vector<AutomationPoint> readAutomationFile(const std::filesystem::path& path);

/// The points as nodes of an automation, whose positions are source samples. `sampleRate` is in samples per
/// second, `speed` in source samples per output sample. Throws CommandError for times out of order, and for
/// positions from 2^62 on. Equal times are allowed and make a jump.
std::vector<LevelNode> levelNodes(const std::vector<AutomationPoint>& points, int sampleRate, double speed);

} // namespace audlmd::command
