#pragma once

#include <array>

namespace Aud::Render {

/// The mode code, read as its six fields. The numbers are those of the code; `envelopeStage` indexes
/// envelopeStages.
struct ModeFields {
    /// 0 reads the source backwards, 1 forwards.
    unsigned int direction;
    /// 0 none, 1 dynamic, 2 fixed.
    unsigned int levelStage;
    /// 0 none, 1 the equaliser.
    unsigned int filterStage;
    /// 0 none, 1 linear, 2 filtering.
    unsigned int srcStage;
    unsigned int envelopeStage;
    /// 0 walks the level's nodes backwards, 1 forwards; without meaning unless levelStage is 1.
    unsigned int dynamicLevelDirection;

    friend constexpr bool operator==(const ModeFields&, const ModeFields&) = default;
};

/// The shape of the fade in one envelope stage.
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

/// What each value of the field selects. Deliberately not a clean bit field: the fixed level sits in the low
/// bit of the values below 6 only.
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

inline constexpr unsigned long largestModeCode = 1751;

/// Reads the fields of any code below 2048, valid or not.
constexpr ModeFields decodeModeCode(unsigned long code) {
    const auto bits = [code](unsigned int lowest, unsigned int mask) {
        return static_cast<unsigned int>(code >> lowest) & mask;
    };
    return {.direction = bits(10, 1),
            .levelStage = bits(8, 3),
            .filterStage = bits(7, 1),
            .srcStage = bits(5, 3),
            .envelopeStage = bits(1, 15),
            .dynamicLevelDirection = bits(0, 1)};
}

constexpr unsigned long encodeModeCode(const ModeFields& fields) {
    return static_cast<unsigned long>(fields.direction) << 10 |
           static_cast<unsigned long>(fields.levelStage) << 8 |
           static_cast<unsigned long>(fields.filterStage) << 7 |
           static_cast<unsigned long>(fields.srcStage) << 5 |
           static_cast<unsigned long>(fields.envelopeStage) << 1 | fields.dynamicLevelDirection;
}

/// Whether the code names a chain: a two-bit field never holds 3.
constexpr bool isValidModeCode(unsigned long code) {
    const ModeFields fields = decodeModeCode(code);
    return code <= largestModeCode && fields.levelStage < 3 && fields.srcStage < 3 &&
           fields.envelopeStage < envelopeStages.size();
}

/// Whether the code names the same chain as the even code before it.
constexpr bool isTwinOfEvenCode(unsigned long code) {
    const ModeFields fields = decodeModeCode(code);
    return fields.dynamicLevelDirection == 1 && fields.levelStage != 1;
}

} // namespace Aud::Render
