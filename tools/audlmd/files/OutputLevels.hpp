#pragma once

#include "host/deliver/ProgrammeMeter.hpp"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace audlmd::command {

/// How loud an output is that was brought to a level.
struct OutputLevels {
    /// With the gain.
    ProgrammeLevels levels;
    /// Of each stem, if there are any.
    std::vector<ProgrammeLevels> stems = {};
    /// In decibels: that of every sample.
    double gain = 0.0;
    /// How that is less than was asked, in a line for the user. Empty: it is not.
    std::string shortfall = {};
};

/// "-23.0 LUFS, range 5.2 LU, ...; gain +3.10 dB": what is measured and defined.
std::string levelsLine(const OutputLevels& output);

/// Decibels, LUFS and LU. What is not defined is null, as silence is.
nlohmann::json levelsJson(const ProgrammeLevels& levels);
/// The same, with the gain.
nlohmann::json levelsJson(const OutputLevels& output);

} // namespace audlmd::command
