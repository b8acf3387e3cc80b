#pragma once

#include "loop_modes/ModeCode.hpp"

#include <array>
#include <cstddef>

namespace Aud::Render {

inline constexpr std::size_t validModeCount = 864;

/// All valid codes in the order of registration: the direction runs fastest, then level, filter, conversion
/// and envelope; the direction of the dynamic level runs slowest.
inline constexpr std::array<unsigned long, validModeCount> registrationOrder = [] {
    using Conversion = ConversionStage;
    std::array<unsigned long, validModeCount> order{};
    std::size_t next = 0;
    for (auto dynamicLevelDirection : {DynamicLevelDirection::reverse, DynamicLevelDirection::forwards})
        for (unsigned int envelopeStage = 0; envelopeStage < envelopeStages.size(); ++envelopeStage)
            for (auto srcStage : {Conversion::none, Conversion::linear, Conversion::filtering})
                for (auto filterStage : {FilterStage::none, FilterStage::equaliser})
                    for (auto levelStage : {LevelStage::none, LevelStage::dynamic, LevelStage::fixed})
                        for (auto direction : {Direction::reverse, Direction::forward})
                            order[next++] = encodeModeCode({direction, levelStage, filterStage, srcStage,
                                                            envelopeStage, dynamicLevelDirection});
    return order;
}();

} // namespace Aud::Render
