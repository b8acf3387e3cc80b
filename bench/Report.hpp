#pragma once

#include "bench/Timing.hpp"

#include <nlohmann/json.hpp>

#include <string>

namespace Bench {

/// The figures of one thing beside those of its yardstick, both divided by `unit`.
inline nlohmann::json figures(const Timing& timing, const Timing& yardstick, double unit) {
    return {{"minimum", timing.minimum() / unit},
            {"median", timing.median() / unit},
            {"floorMinimum", yardstick.minimum() / unit},
            {"floorMedian", yardstick.median() / unit}};
}

/// Overwrites one line on a terminal, and is silent elsewhere.
void showProgress(const std::string& what, std::size_t done, std::size_t all);

/// As a table on standard output, and as JSON where the selection asks for it.
void report(const nlohmann::json& rows, const std::string& jsonFile);

} // namespace Bench
