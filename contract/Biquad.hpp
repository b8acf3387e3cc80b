#pragma once

#include "contract/HostStorage.hpp"

namespace Aud::Filter {

/// One second-order section of the equaliser.
class Biquad : public HostStorage::Biquad {
public:
    /// Filters one sample, remembers the result and returns it.
    float processSample(float x);
    /// The result of the most recent processSample.
    float getLastProcessSampleResult();
};

/// `Bands` sections in series, stored one after another.
/// \snippet signal.cpp equaliser
template <unsigned int Bands>
class MultiBandBiquad {
public:
    /// Runs the sample through every section in band order. The renderer defines and exports it; whoever
    /// includes ole/Aud/MultiBandBiquadApplyingIterator.hpp has it inline.
    float processSample(float x);

    /// The result of the last section's most recent processSample.
    float getLastProcessSampleResult() { return bands_[Bands - 1].getLastProcessSampleResult(); }

    Biquad& band(unsigned int number) { return bands_[number]; }

private:
    Biquad bands_[Bands];
};

} // namespace Aud::Filter
