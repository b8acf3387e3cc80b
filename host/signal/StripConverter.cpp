#include "host/signal/StripConverter.hpp"

#include "host/signal/Speed.hpp"

#include <libresample.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace audlmd {
namespace {

using Aud::SubSamplePos;
using Aud::Render::FilteringSRCState;

/// The linear converter keeps nothing from call to call. Each call reads both neighbours of its first
/// position again, so that the level is placed again and the equaliser steps back by one sample.
class LinearStripConverter final : public StripConverter {
public:
    using StripConverter::StripConverter;

    /// The chain starts on the left neighbour of the position, and the offset leads to the position.
    CallStart startOfCall(OutputSample output) const override {
        const SubSamplePos position = readPosition(output);
        const std::int64_t left = speedIsWhole() ? position.sample - 1 : position.sample;
        return {left, SubSamplePos(position.sample - left, position.fraction)};
    }

    /// A placement with alignment 1 is still valid at `end`, and so is a position there. With a speed that is
    /// not whole, a call ends before an output on a whole position.
    std::uint64_t mostOutputs(OutputSample output, RangeSample end) const override {
        const SubSamplePos position = readPosition(output);
        const std::uint64_t most = positionsUpTo(SubSamplePos(end.number(), 0), position, plan_.step);
        const std::uint64_t lagsAt = speedIsWhole() ? 0 : stepsToWholePosition(position, plan_.step);
        return lagsAt == 0 ? most : std::min(most, lagsAt);
    }

    bool levelCarriesOn() const override { return false; }

    /// The next call reads the left neighbour again, unless the call starts on the sample that was read last.
    void afterCall(Aud::Render::PerSourceRecord& record, OutputSample next) override {
        if (speedIsWhole() || readPosition(next).fraction != 0)
            stepBack(record.equaliser);
    }

private:
    bool speedIsWhole() const { return plan_.step.fraction == 0; }

    /// On a whole position other than a call's first the converter lags by one sample. At whole speeds every
    /// position is whole, so start at 1: there the lagging converter gives sample 0. Other speeds start the
    /// least fraction beyond 0. Because steps are rounded to fractions, they
    /// may still meet a whole position: at speed 0.75 with the fifth output.
    SubSamplePos readPosition(OutputSample output) const {
        return advanced(speedIsWhole() ? SubSamplePos(1, 0) : SubSamplePos(0, 1), plan_.step,
                        static_cast<std::uint64_t>(output.number()));
    }
};

/// The filtering converter keeps its resampler open from call to call. The first call renders 0 samples: that
/// call opens the resampler and fills it.
class FilteringStripConverter final : public StripConverter {
public:
    FilteringStripConverter(const StripPlan& plan, FilteringSRCState& state)
        : StripConverter(plan), state_(state) {}
    ~FilteringStripConverter() override { FilteringStripConverter::restart(); }
    FilteringStripConverter(const FilteringStripConverter&) = delete;
    FilteringStripConverter& operator=(const FilteringStripConverter&) = delete;

    /// The record holds the only handle to the resampler, so the resampler is closed before the state is
    /// cleared.
    void restart() override {
        if (state_.handle != nullptr)
            resample_close(state_.handle);
        state_ = {};
    }

    /// Aligned to the blocks, which are counted from the first sample of the opening call.
    FadeEnvelope envelopeFrom(OutputSample output) const override {
        return {plan_.settings.fade, static_cast<std::uint64_t>(plan_.rangeLength), fadeAlignment,
                startOfCall(output).sample};
    }

    /// Primes with a call of 0 samples and an offset of one step, so that the first output belongs to the
    /// range's first sample and not to the old state. Later calls ignore the offset.
    CallStart startOfCall(OutputSample output) const override {
        if (state_.opened == 0)
            return {std::llround(static_cast<double>(output.number()) * plan_.speedInForce), plan_.step};
        return {plan_.inRange(state_.nextSourcePos), plan_.step};
    }

    std::uint64_t mostOutputs(OutputSample output, RangeSample end) const override {
        if (state_.opened == 0)
            return 0;
        // The least number of output samples that a block is good for; more may fit into some blocks. The
        // resampler may end a block up to one source sample early.
        const auto perBlock =
            static_cast<std::uint64_t>((FilteringSRCState::blockLength - 1) / plan_.speedInForce);
        const auto samples = static_cast<std::uint64_t>(end - startOfCall(output).sample);
        return perBlock * std::min(samples / FilteringSRCState::blockLength, longestCall);
    }

private:
    /// The converter reads whole blocks of the inner chain, the first two of them in the opening call. The
    /// envelope must not have to change before the blocks are used up.
    static constexpr std::uint32_t fadeAlignment = 2 * FilteringSRCState::blockLength;

    FilteringSRCState& state_;
};

} // namespace

/// Without blocks every sample may change the slope: alignment 1.
FadeEnvelope StripConverter::envelopeFrom(OutputSample) const {
    return {plan_.settings.fade, static_cast<std::uint64_t>(plan_.rangeLength)};
}

/// Without a converter output samples are source samples, which these two functions rely on.
CallStart StripConverter::startOfCall(OutputSample output) const {
    return {output.number(), Aud::zeroSubSamplePos};
}

std::uint64_t StripConverter::mostOutputs(OutputSample output, RangeSample end) const {
    return static_cast<std::uint64_t>(end - startOfCall(output).sample);
}

std::unique_ptr<StripConverter> makeStripConverter(const StripPlan& plan, FilteringSRCState& state) {
    switch (plan.settings.converter) {
    case Converter::linear:
        return std::make_unique<LinearStripConverter>(plan);
    case Converter::filtering:
        return std::make_unique<FilteringStripConverter>(plan, state);
    case Converter::best:
        throw std::invalid_argument("the converter \"best\" converts the material, not the strip: play what "
                                    "atNormalSpeed() makes of both");
    case Converter::none:
        break;
    }
    return std::make_unique<StripConverter>(plan);
}

} // namespace audlmd
