#pragma once

#include "host/deliver/ProgrammeMeter.hpp"

#include <optional>

namespace audlmd {

/// What a delivery asks for: a loudness, or a level of the highest sample; and what its peaks must not
/// exceed. Levels as in ProgrammeLevels.
struct DeliveryTarget {
    /// In LUFS. Not set: `samplePeak` is.
    std::optional<double> loudness;
    std::optional<double> samplePeak;
    std::optional<double> mostTruePeak;
    /// 0 dB for a format that clips there. Not set: samples of any height are kept.
    std::optional<double> mostSamplePeak;
};

/// The one gain that brings a programme to what is asked, in decibels.
struct DeliveryGain {
    enum class Limit { none, truePeak, samplePeak };

    double wanted = 0.0;
    /// The gain at which the limit is just kept; never more than `wanted`.
    double possible = 0.0;
    /// Why it is less.
    Limit limit = Limit::none;
};

/// Throws std::invalid_argument, whose text says why "it" has no such level, for a programme that is silent,
/// too short, or holds samples that are no finite numbers.
/// \snippet deliver.cpp gain
DeliveryGain deliveryGain(const ProgrammeLevels& programme, const DeliveryTarget& target);

} // namespace audlmd
