#pragma once

#include "host/signal/StripSettings.hpp"
#include "loop_modes/ModeCode.hpp"
#include "ole/Aud/SubSamplePos.hpp"

#include <cstdint>
#include <string>

namespace audlmd {

/// The longest range of a strip, in samples: 5.8 years at 48 kHz.
inline constexpr std::int64_t longestRange = std::int64_t{1} << 43;

/// How far from 0 a sample of a material or of an output may lie, on either side: 761,000 years at 48 kHz. A
/// sum of several such positions still fits into 64 bits, and so does what a reader adds to look ahead.
inline constexpr std::int64_t farthestPosition = std::int64_t{1} << 60;

/// Throws std::invalid_argument, with a sentence that begins with `what`, for a position beyond
/// farthestPosition. Use this before any arithmetic on a position that a program or a file has given.
/// \snippet signal.cpp plan
void requirePosition(std::int64_t position, const std::string& what);

/// How many output samples a strip has: ceil(range / speed). Throws std::invalid_argument for a range that is
/// empty or too long.
std::uint64_t outputLengthOf(const StripSettings& settings);

/// What follows from the settings of a strip alone: mode codes, lengths, speeds, positions. A plan needs
/// neither cache nor library, and never changes.
/// \snippet signal.cpp plan
struct StripPlan {
    /// Throws std::invalid_argument, with a sentence for the user, for settings that are out of range or
    /// exclude each other. With the converter `best` the plan tells lengths and speed; a player needs the
    /// plan of atNormalSpeed().
    explicit StripPlan(StripSettings stripSettings);

    /// In which the material is read.
    Aud::Render::Direction direction() const {
        return settings.reverse ? Aud::Render::Direction::reverse : Aud::Render::Direction::forward;
    }

    /// Whether the strip's samples are those of the material, in its order, where the fades have full level.
    bool playsAsItIs() const {
        return !settings.reverse && settings.converter == Converter::none && settings.equaliser.empty() &&
               !settings.middleLevel && !settings.outerLevel && !settings.automation;
    }

    /// Which sample of the material a sample of the range is. In reverse the first one is the last in the
    /// material.
    MaterialSample inMaterial(RangeSample sample) const;
    /// The inverse.
    RangeSample inRange(MaterialSample sample) const;
    /// The position of a sample on the automation. Needs settings.automation. Independent of the direction in
    /// which the material is read.
    std::int64_t automationPosition(RangeSample sample) const;

    StripSettings settings;
    Distance<SourceRate> rangeLength;
    /// In output samples: ceil(range / requested speed). Uses the requested speed, not the rounded step.
    std::uint64_t outputLength = 0;

    /// Names the stages that the settings need, and no others.
    unsigned long modeCode = 0;
    /// The same stages without the envelope, which multiplies by 1 where the fades have full level.
    unsigned long fullLevelModeCode = 0;

    /// The linear converter's step, in fixed point. The filtering converter uses it once, as the offset when
    /// it opens.
    Aud::SubSamplePos step{1, 0};
    /// The filtering converter's speed, which it takes in single precision.
    float speed = 1.0F;
    /// Source samples per output sample, after rounding.
    double speedInForce = 1.0;
    /// Of the settings, or else the speed in force.
    Orv::OutputGearing gearing;

    /// With the bands of the settings, and no samples filtered yet.
    Aud::Filter::MultiBandBiquad<5U> equaliser;

private:
    void chooseModes();
    void chooseSpeed();
};

} // namespace audlmd
