#pragma once

#include "loop_modes/ModeCode.hpp"

#include <array>
#include <cstddef>

namespace Aud::Render {

inline constexpr std::size_t validModeCount = 864;

/// All valid codes in the order of registration: the direction runs fastest, then level, filter, conversion
/// and envelope; the direction of the dynamic level runs slowest.
inline constexpr std::array<unsigned long, validModeCount> registrationOrder = [] {
    std::array<unsigned long, validModeCount> order{};
    std::size_t next = 0;
    for (unsigned int dynamicLevelDirection : {0u, 1u})
        for (unsigned int envelopeStage = 0; envelopeStage < envelopeStages.size(); ++envelopeStage)
            for (unsigned int srcStage : {0u, 1u, 2u})
                for (unsigned int filterStage : {0u, 1u})
                    for (unsigned int levelStage : {0u, 1u, 2u})
                        for (unsigned int direction : {0u, 1u})
                            order[next++] = encodeModeCode({direction, levelStage, filterStage, srcStage,
                                                            envelopeStage, dynamicLevelDirection});
    return order;
}();

} // namespace Aud::Render
