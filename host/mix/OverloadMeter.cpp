#include "host/mix/OverloadMeter.hpp"

#include "host/signal/BlockLoops.hpp"

#include <algorithm>

namespace audlmd {

void OverloadMeter::measure(std::span<const float> samples, float gain, TimelineSample at) {
    const float peak = peakOf(samples) * gain;
    overload_.peak = std::max(overload_.peak, peak);
    if (!(peak > 1.0F))
        return;
    const CountAbove above = countAbove(samples, 1.0F / gain);
    if (overload_.samples == 0)
        overload_.firstAt = at + above.first;
    overload_.samples += above.samples;
    spans_.add({.from = at + above.first, .to = at + above.last + 1});
}

Overload OverloadMeter::overload() const {
    Overload overload = overload_;
    overload.spans = spans_.spans();
    return overload;
}

} // namespace audlmd
