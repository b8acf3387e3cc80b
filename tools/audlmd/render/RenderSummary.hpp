#pragma once

#include "host/mix/MixReport.hpp"
#include "tools/audlmd/files/OutputLevels.hpp"
#include "tools/audlmd/mix/MixReportText.hpp"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace audlmd::command {

/// How a render went.
struct RenderSummary {
    std::vector<WrittenSound> outputs;
    std::int64_t frames = 0;
    int channels = 0;
    /// In frames per second.
    int sampleRate = 0;
    /// How long rendering and writing took.
    double seconds = 0.0;
    /// Of all channels together, see MaterialStatistics.
    std::uint64_t underrunSamples = 0;
    std::uint64_t underrunEpisodes = 0;
    /// Of each channel. Empty where the samples were copied as they are.
    std::vector<Overload> overloads = {};
    /// What became of what is over full scale: kinds of lines.
    std::vector<std::string> overloadWords = {};
    /// Of an output that was brought to a level.
    std::optional<OutputLevels> levels = std::nullopt;

    /// What went beyond full scale, and unless `quiet` or samples are missing: length, speed of rendering,
    /// missing samples, levels.
    std::vector<std::string> lines(bool quiet) const;
    nlohmann::json json() const;
};

} // namespace audlmd::command
