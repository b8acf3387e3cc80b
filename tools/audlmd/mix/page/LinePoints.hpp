#pragma once

#include "tools/audlmd/mix/picture/TimelineSketch.hpp"

#include <nlohmann/json_fwd.hpp>

#include <vector>

namespace audlmd::command {

/// A corner of a line over a clip.
struct LinePoint {
    /// In output samples.
    double sample = 0.0;
    /// Of the mixer-style curve.
    float uValue = 0.0F;
};

/// The fades of a strip, in as few corners as show them. Empty without fades.
std::vector<LinePoint> fadeLine(const StripSketch& strip);
/// Its automation and gain, likewise.
std::vector<LinePoint> levelLine(const StripSketch& strip);

/// Pairs of a whole output sample and a u-value in thousandths.
nlohmann::json pointsJson(const std::vector<LinePoint>& line);

} // namespace audlmd::command
