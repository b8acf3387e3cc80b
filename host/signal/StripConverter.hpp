#pragma once

#include "host/signal/StripPlan.hpp"
#include "loop_modes/IteratorCreationParams.hpp"

#include <cstdint>
#include <memory>

namespace audlmd {

/// The most output samples of one render call. A render function counts in 32 bits.
inline constexpr std::uint64_t longestCall = std::uint64_t{1} << 30;

/// Where the chain of a render call starts: reads `sample` first, and moves on by `offset` before the first
/// output.
struct CallStart {
    RangeSample sample;
    Aud::SubSamplePos offset;
};

/// What depends on the kind of converter around the render calls of a strip: where a call starts, how far it
/// may go, and what carries on to the next one. docs/architecture.md has the picture and a table. The base
/// class is the strip without a converter.
///
/// All functions but restart() are asked once per render call, never per sample.
class StripConverter {
public:
    /// The plan must outlive the converter.
    explicit StripConverter(const StripPlan& plan) : plan_(plan) {}
    virtual ~StripConverter() = default;
    StripConverter(const StripConverter&) = delete;
    StripConverter& operator=(const StripConverter&) = delete;

    /// Forgets the calls so far. Called before the first call, after a jump and after an exception.
    virtual void restart() {}

    /// The fades as the calls from an output sample on can follow them. Ask after restart(). A converter that
    /// reads ahead in blocks can follow a change of slope between its blocks only.
    virtual FadeEnvelope envelopeFrom(OutputSample output) const;

    /// Of the call whose first output sample is `output`. Depends on the output sample alone, or, with an
    /// open resampler, on what the calls so far have read.
    virtual CallStart startOfCall(OutputSample output) const;

    /// How many output samples a call that starts with `output` can render before it reads beyond `end`,
    /// where the envelope must be placed anew. May exceed longestCall. 0: a call of 0 samples must come
    /// first.
    virtual std::uint64_t mostOutputs(OutputSample output, RangeSample end) const;

    /// Whether the dynamic level starts a call where the level ended the call before. Otherwise the level is
    /// placed for every call.
    virtual bool levelCarriesOn() const { return true; }

    /// Undoes in the record what the next call, from output sample `next` on, will do again.
    virtual void afterCall(Aud::Render::PerSourceRecord&, OutputSample /*next*/) {}

protected:
    const StripPlan& plan_;
};

/// The converter of a plan. `state` is the filtering converter's in the record; the converter closes the
/// resampler that the calls open there. Plan and state must outlive the converter.
std::unique_ptr<StripConverter> makeStripConverter(const StripPlan& plan,
                                                   Aud::Render::FilteringSRCState& state);

} // namespace audlmd
