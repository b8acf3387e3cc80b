#pragma once

#include "standalone/signal/Automation.hpp"
#include "standalone/signal/Equaliser.hpp"
#include "standalone/signal/Fade.hpp"
#include "tools/audlmd/TimeParser.hpp"

#include <filesystem>
#include <string_view>
#include <vector>

namespace audlmd::command {

/// Settings as they are written on the command line. `option` is what a message names; every failure is a
/// CommandError.

/// A number, with a sign or without; "inf" and "nan" are numbers too.
double parseNumber(std::string_view text, std::string_view option);

/// Decibels as the u-value of the mixer-style curve: at most +10, "-inf" for silence.
float parseLevel(std::string_view text, std::string_view option);

struct FadeText {
    TimeValue length;
    FadeCurve curve = FadeCurve::linear;
};

/// `T` or `T:curve`, the curve one of linear, log and power.
FadeText parseFade(std::string_view text, std::string_view option);

/// `kind:frequency[:gain][:q]`: peak, lowshelf and highshelf with a gain, highpass and lowpass without. A
/// frequency may be written as 1.5k. The numbers' ranges are left to the equaliser.
EqualiserBand parseBand(std::string_view text, std::string_view option);

struct AutomationPoint {
    TimeValue time;
    float uValue = 0.0F;
};

/// Reads lines of `time,decibels`, in order of time. Empty lines, what follows a #, and a first line of
/// headings are passed over.
std::vector<AutomationPoint> readAutomationFile(const std::filesystem::path& path);

/// The same as nodes, in source samples, for play at `speed` source samples per output sample.
std::vector<LevelNode> levelNodes(const std::vector<AutomationPoint>& points, int sampleRate, double speed);

} // namespace audlmd::command
