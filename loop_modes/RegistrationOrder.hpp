#pragma once

#include "loop_modes/ModeCode.hpp"
#include "ole/Aud/SampleFormats.hpp"
#include "ole/Aud/SummingOutputSampleIterator.hpp"

#include <array>
#include <cstddef>
#include <tuple>

// What is registered at load, in which order: each code in all fourteen tables before the next code.
namespace Aud::Render {

template <class P>
using Summing = SummingOutputSampleIterator<P>;

/// The types that samples are delivered through, in the order in which each mode is registered for them.
using OutputTypes =
    std::tuple<SampleF32*, SampleS16*, SampleS24*, SampleS8*, SampleU8*, SampleS24In32*, SampleS32*,
               Summing<SampleF32*>, Summing<SampleS16*>, Summing<SampleS24*>, Summing<SampleS8*>,
               Summing<SampleU8*>, Summing<SampleS24In32*>, Summing<SampleS32*>>;

inline constexpr std::size_t outputTypeCount = std::tuple_size_v<OutputTypes>;

inline constexpr std::size_t validModeCount = 864;

/// All valid codes in the order of registration: the direction runs fastest, then level, filter, conversion
/// and envelope; the direction of the dynamic level runs slowest.
/// \snippet modes.cpp order
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
