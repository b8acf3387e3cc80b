#pragma once

#include <array>

namespace Aud::Render {

// The values of the fields are the numbers in the code.

/// The way in which the source is read.
enum class Direction : unsigned int { reverse = 0, forward = 1 };

/// The outer level.
enum class LevelStage : unsigned int { none = 0, dynamic = 1, fixed = 2 };

enum class FilterStage : unsigned int { none = 0, equaliser = 1 };

/// The speed converter.
enum class ConversionStage : unsigned int { none = 0, linear = 1, filtering = 2 };

/// The way in which a dynamic level walks its nodes. It is independent of the source's direction.
enum class DynamicLevelDirection : unsigned int { reverse = 0, forwards = 1 };

/// The six fields of a mode code.
/// \snippet modes.cpp code
struct ModeFields {
    Direction direction;
    LevelStage levelStage;
    FilterStage filterStage;
    ConversionStage srcStage;
    /// Indexes envelopeStages.
    unsigned int envelopeStage;
    /// Has a meaning only where levelStage is dynamic.
    DynamicLevelDirection dynamicLevelDirection;

    friend constexpr bool operator==(const ModeFields&, const ModeFields&) = default;
};

/// The shape of the fade in one envelope stage. Those from rampHold on are stored shapes: their curve is a
/// pointer that the maker resolves from the parameters, which it validates.
enum class EnvelopeKind {
    none,
    simpleRampMixerStyleLog,
    simpleRampConstantPower,
    rampHold,
    holdRamp,
    rampHoldRamp
};

/// The layer between envelope and outer level.
enum class MiddleLevelKind { passThrough, fixed, absent };

struct EnvelopeStage {
    EnvelopeKind envelope;
    MiddleLevelKind middleLevel;
};

/// What each value of the field envelopeStage selects. Deliberately not a clean bit field: the fixed level
/// sits in the low bit of the values 0 to 5, and the values from 9 on imply it.
inline constexpr std::array<EnvelopeStage, 12> envelopeStages{{
    {EnvelopeKind::none, MiddleLevelKind::passThrough},
    {EnvelopeKind::none, MiddleLevelKind::fixed},
    {EnvelopeKind::simpleRampMixerStyleLog, MiddleLevelKind::absent},
    {EnvelopeKind::simpleRampConstantPower, MiddleLevelKind::absent},
    {EnvelopeKind::simpleRampMixerStyleLog, MiddleLevelKind::fixed},
    {EnvelopeKind::simpleRampConstantPower, MiddleLevelKind::fixed},
    {EnvelopeKind::rampHold, MiddleLevelKind::absent},
    {EnvelopeKind::holdRamp, MiddleLevelKind::absent},
    {EnvelopeKind::rampHoldRamp, MiddleLevelKind::absent},
    {EnvelopeKind::rampHold, MiddleLevelKind::fixed},
    {EnvelopeKind::holdRamp, MiddleLevelKind::fixed},
    {EnvelopeKind::rampHoldRamp, MiddleLevelKind::fixed},
}};

/// The first code with a bit that no field has.
inline constexpr unsigned long modeCodeLimit = 1UL << 11;

/// Reads the fields of any code below modeCodeLimit, valid or not. A field of two bits may then hold 3, which
/// has no name.
constexpr ModeFields decodeModeCode(unsigned long code) {
    const auto bits = [code](unsigned int lowest, unsigned int mask) {
        return static_cast<unsigned int>(code >> lowest) & mask;
    };
    return {.direction = Direction{bits(10, 1)},
            .levelStage = LevelStage{bits(8, 3)},
            .filterStage = FilterStage{bits(7, 1)},
            .srcStage = ConversionStage{bits(5, 3)},
            .envelopeStage = bits(1, 15),
            .dynamicLevelDirection = DynamicLevelDirection{bits(0, 1)}};
}

constexpr unsigned long encodeModeCode(const ModeFields& fields) {
    return static_cast<unsigned long>(fields.direction) << 10 |
           static_cast<unsigned long>(fields.levelStage) << 8 |
           static_cast<unsigned long>(fields.filterStage) << 7 |
           static_cast<unsigned long>(fields.srcStage) << 5 |
           static_cast<unsigned long>(fields.envelopeStage) << 1 |
           static_cast<unsigned long>(fields.dynamicLevelDirection);
}

/// Whether the code names a chain.
constexpr bool isValidModeCode(unsigned long code) {
    const ModeFields fields = decodeModeCode(code);
    return code < modeCodeLimit && fields.levelStage <= LevelStage::fixed &&
           fields.srcStage <= ConversionStage::filtering && fields.envelopeStage < envelopeStages.size();
}

/// 1751: every field at its largest.
inline constexpr unsigned long largestModeCode =
    encodeModeCode({Direction::forward, LevelStage::fixed, FilterStage::equaliser, ConversionStage::filtering,
                    envelopeStages.size() - 1, DynamicLevelDirection::forwards});

/// Whether the code names the same chain as the even code before it.
constexpr bool isTwinOfEvenCode(unsigned long code) {
    const ModeFields fields = decodeModeCode(code);
    return fields.dynamicLevelDirection == DynamicLevelDirection::forwards &&
           fields.levelStage != LevelStage::dynamic;
}

} // namespace Aud::Render
