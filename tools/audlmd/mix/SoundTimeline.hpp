#pragma once

#include "host/mix/Timeline.hpp"
#include "tools/audlmd/options/OutputOptions.hpp"
#include "tools/audlmd/options/Parsers.hpp"

#include <cstdint>
#include <filesystem>
#include <optional>

namespace audlmd::command {

/// Makes a timeline of whole sound files: at the first one's rate, unless the options name another, and on
/// the most channels of any. Opens each file once. All failures are CommandErrors and SoundFileErrors.
class SoundTimeline {
public:
    /// The options must outlive this object.
    explicit SoundTimeline(const RenderingOptions& options);

    /// Puts a file behind the one before, on the same track. `crossfade` is how the two overlap.
    void append(const std::filesystem::path& input, const std::optional<FadeValue>& crossfade);
    /// Puts a file on a track of its own, from the start.
    void addTrack(const std::filesystem::path& input);

    Timeline timeline() &&;
    /// The format of all inputs, where each is copied as it is. Nothing where one is converted, and for 32
    /// bits.
    std::optional<FormatId> format() const { return format_; }

private:
    TimelineStrip open(const std::filesystem::path& input);
    void noteFormat(const std::filesystem::path& file, const Media& media, bool isFirst);

    const RenderingOptions& options_;
    Timeline timeline_;
    std::optional<FormatId> format_;
};

} // namespace audlmd::command
