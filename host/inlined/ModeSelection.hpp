#pragma once

#include "loop_modes/ModeCode.hpp"

#include <initializer_list>

namespace audlmd {

/// Some of the values of one field of the mode code.
template <class Field>
class Choice {
public:
    constexpr Choice(std::initializer_list<Field> chosen) {
        for (const Field field : chosen)
            bits_ |= 1U << static_cast<unsigned int>(field);
    }
    constexpr bool has(Field field) const { return (bits_ >> static_cast<unsigned int>(field) & 1U) != 0; }

private:
    unsigned int bits_ = 0;
};

/// The modes that are compiled into a program: those whose every field is chosen. The CMake function
/// audlmd_add_inlined writes one of these.
struct ModeSelection {
    Choice<Aud::Render::Direction> directions;
    Choice<Aud::Render::FilterStage> filters;
    Choice<Aud::Render::EnvelopeKind> envelopes;
    Choice<Aud::Render::MiddleLevelKind> middleLevels;
    Choice<Aud::Render::LevelStage> outerLevels;
    Choice<Aud::Render::DynamicLevelDirection> dynamicLevelDirections;
    Choice<Aud::Render::ConversionStage> conversions;

    /// The code must be valid. The direction of a dynamic level counts where there is one.
    constexpr bool has(unsigned long code) const {
        using namespace Aud::Render;
        const ModeFields fields = decodeModeCode(code);
        const EnvelopeStage stage = envelopeStages[fields.envelopeStage];
        // Two kinds of middle level do nothing to a sample; the table of envelope stages picks the right one.
        const auto middleLevel =
            stage.middleLevel == MiddleLevelKind::absent ? MiddleLevelKind::passThrough : stage.middleLevel;
        return directions.has(fields.direction) && filters.has(fields.filterStage) &&
               envelopes.has(stage.envelope) && middleLevels.has(middleLevel) &&
               outerLevels.has(fields.levelStage) && conversions.has(fields.srcStage) &&
               (fields.levelStage != LevelStage::dynamic ||
                dynamicLevelDirections.has(fields.dynamicLevelDirection));
    }
};

} // namespace audlmd
