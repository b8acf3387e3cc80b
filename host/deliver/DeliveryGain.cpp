#include "host/deliver/DeliveryGain.hpp"

#include <cmath>
#include <stdexcept>

namespace audlmd {

DeliveryGain deliveryGain(const ProgrammeLevels& programme, const DeliveryTarget& target) {
    if (programme.samplePeak == -std::numeric_limits<double>::infinity())
        throw std::invalid_argument("it is silent");
    if (!std::isfinite(programme.samplePeak))
        throw std::invalid_argument("it holds samples that are infinite");
    if (target.loudness && !programme.integrated)
        throw std::invalid_argument("it is shorter than 0.4 s, for which no loudness is defined");
    if (target.loudness && !std::isfinite(*programme.integrated))
        throw std::invalid_argument("it is silent but for less than 0.4 s");
    const double level = target.loudness ? *programme.integrated : programme.samplePeak;
    DeliveryGain gain{.wanted = target.loudness.value_or(target.samplePeak.value_or(level)) - level};
    gain.possible = gain.wanted;
    const auto keep = [&gain](double most, DeliveryGain::Limit limit) {
        if (most < gain.possible) {
            gain.possible = most;
            gain.limit = limit;
        }
    };
    if (target.mostTruePeak && programme.truePeak)
        keep(*target.mostTruePeak - *programme.truePeak, DeliveryGain::Limit::truePeak);
    if (target.mostSamplePeak)
        keep(*target.mostSamplePeak - programme.samplePeak, DeliveryGain::Limit::samplePeak);
    return gain;
}

} // namespace audlmd
