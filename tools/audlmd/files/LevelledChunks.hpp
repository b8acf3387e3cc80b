#pragma once

#include "host/deliver/Delivery.hpp"
#include "host/mix/Reporting.hpp"
#include "tools/audlmd/JobLog.hpp"
#include "tools/audlmd/files/ChunkWriter.hpp"
#include "tools/audlmd/files/FloatSpool.hpp"
#include "tools/audlmd/files/OutputLevels.hpp"
#include "tools/audlmd/options/LevelOptions.hpp"

#include <cstddef>
#include <deque>
#include <optional>
#include <vector>

namespace audlmd::command {

/// The chunks of an output, with one gain over everything, which is chosen once all of them are rendered: in
/// a first pass they are measured and kept as floats, in the second they take the gain and the output's
/// format. So it stands between what renders and what writes.
///
/// What is measured are the channels of the first output. Those of others that lie behind, such as stems,
/// take the same gain, and their sum, in their order, is then the first one's: in single precision bit for
/// bit, as it was before the gain.
class LevelledChunks final : public ChunkProducer {
public:
    /// The floats are kept beside the first output. `from` is the place of the first frame. Throws
    /// CommandError, also where an output does not hold its format.
    LevelledChunks(const LevelOptions& options, const std::vector<SoundOutput>& outputs, TimelineSample from,
                   std::size_t threads);

    /// What the chunks of the first pass hold.
    const OutputLayout& floats() const { return layout_; }

    /// The first pass: takes all chunks of a producer of f32, in blocks of so many frames. Throws
    /// CommandError where the level cannot be, what the producer throws, and what `done` throws, which is
    /// told how many frames are measured. Call this once, and before what is below.
    void measure(ChunkProducer& floats, std::size_t block, const std::function<void(std::int64_t)>& done);

    /// What the chunks of the second pass hold. Before they are filled.
    void setFormat(FormatId format, Rounding rounding);

    /// The outputs, with their levels.
    std::vector<SoundOutput> told(std::vector<SoundOutput> outputs) const;

    const OutputLevels& levels() const { return levels_; }

    std::size_t parts() const override { return parts_; }
    void fill(std::size_t part, Chunk& chunk) override;

    /// Of each channel, once all chunks are filled: the samples with their gain, before they were stored.
    std::vector<Overload> overloads() const;

private:
    /// Programmes so soft that the absolute gate of loudness counts them out in part: they are measured again
    /// where they will not be.
    ProgrammeLevels measuredLouder(std::size_t programme, double decibels) const;
    void choose(const ProgrammeLevels& programme);
    /// Samples of one channel, with the gain.
    void take(std::size_t channel, std::int64_t from, std::span<float> samples) const;
    std::size_t measured() const { return layout_.speakers.size(); }

    LevelOptions options_;
    /// Of the floats; its speakers are those of the first output.
    OutputLayout layout_;
    std::optional<FormatId> clipping_;
    FormatId format_ = FormatId::f32;
    Rounding rounding_ = Rounding::nearest;
    TimelineSample from_;
    std::size_t parts_;
    FloatSpool spool_;
    /// Of the first output, and of the stems behind.
    std::deque<ProgrammeMeter> meters_;
    OutputLevels levels_;
    float gain_ = 1.0F;
    /// Each is used by the thread that fills the channel.
    std::vector<OverloadMeter> overloads_;
};

} // namespace audlmd::command
