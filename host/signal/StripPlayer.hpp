#pragma once

#include "contract/SampleCache.hpp"
#include "host/services/RenderFunctions.hpp"
#include "host/signal/RecordNumbers.hpp"
#include "host/signal/StripPlan.hpp"
#include "host/signal/Unclipped.hpp"
#include "loop_modes/IteratorCreationParams.hpp"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace audlmd {

class StraightReader;
class StripConverter;

/// Plays one strip, as many samples at a time as asked for.
///
/// The player owns all that the renderer keeps from one call to the next, and makes every call follow the one
/// before without a seam: the bytes do not depend on the calls by which they were rendered.
///
/// Output sample n stands for the source at n x speed samples into the range. There are as many output
/// samples as fit into the range: the range's length divided by the speed, rounded up. A converter and the
/// equaliser start from silence. At the end of the range a converter reads on in the material.
///
/// Use a player from one thread at a time.
/// \snippet signal.cpp player
class StripPlayer {
public:
    /// Reads no samples yet. Throws what StripPlan throws. The cache must outlive the player.
    ///
    /// `inlined` finds the render functions that are compiled into the program: &inlinedRenderFunction of
    /// host/inlined/, with a cache that is a MaterialCache. Null: renderFloats(), too, goes through the
    /// despatch tables.
    StripPlayer(Aud::SampleCache& cache, StripSettings settings,
                RenderFunctionLookUp<Unclipped> inlined = nullptr);
    ~StripPlayer();
    StripPlayer(const StripPlayer&) = delete;
    StripPlayer& operator=(const StripPlayer&) = delete;

    /// All that follows from the settings alone.
    const StripPlan& plan() const { return plan_; }
    /// See StripPlan::modeCode.
    unsigned long modeCode() const { return plan_.modeCode; }
    /// See StripPlan::fullLevelModeCode.
    unsigned long fullLevelModeCode() const { return plan_.fullLevelModeCode; }
    /// In output samples, for the whole range.
    std::uint64_t outputLength() const { return plan_.outputLength; }
    /// In source samples per output sample, after rounding.
    double speedInForce() const { return plan_.speedInForce; }

    /// The next output sample to render.
    OutputSample position() const { return position_; }

    /// What the next render call reads in the record, see audlmd::recordNumbers(). With the filtering
    /// converter the first call opens the resampler.
    /// \snippet signal.cpp record
    std::vector<RecordNumber> recordNumbers() const;

    /// Renders the next samples into a buffer, in the format f32, s16 or s32, and returns how many: as many
    /// as the buffer holds, fewer at the end of the strip, 0 after the end.
    ///
    /// Throws NoSuchMode if there is no render function for the mode, UnknownMaterial, and what a wait
    /// throws. After an exception the player has jumped back, as by seek(), to where the call that failed
    /// began. Blocks of any size give the same bytes.
    std::uint64_t render(std::span<float> samples);
    std::uint64_t render(std::span<std::int16_t> samples);
    std::uint64_t render(std::span<std::int32_t> samples);

    /// The same for any of Aud::Render::OutputTypes: for other formats, and for adding to what the buffer
    /// holds. Renders up to `count` samples, and moves `out` on by as many.
    /// \snippet signal.cpp other formats
    template <class Out>
    std::uint64_t render(Out& out, std::uint64_t count) {
        return renderThrough(out, count, &findRenderFunction<Out>);
    }

    /// Renders floats the fastest way: by the functions compiled into the program, or else through the
    /// tables. The bits are the same up to full scale, where the tables' float format clips: 2^-23 below 1.0
    /// and at -1.0. Use this with headroom, or clip afterwards.
    ///
    /// The trap: a fade needs two modes. Where only some modes are compiled in, ask beforehand whether there
    /// are functions for modeCode() and for fullLevelModeCode().
    std::uint64_t renderFloats(std::span<float> samples);
    /// The next samples, as many as `room` has, where the strip plays its material as it is: where they lie
    /// in the cache, or copied into `room` where they lie in two segments. Nothing where they must be
    /// rendered, because the strip changes them or one of them is not ready, after a wait where the settings
    /// want that.
    ///
    /// The player moves on by as many as are returned. They stay there until the next call. Throws
    /// UnknownMaterial, and what a wait throws.
    std::span<const float> floatsInCache(std::span<float> room);

    /// Jumps to an output sample, up to outputLength(). Throws std::out_of_range.
    ///
    /// Levels, fades and the linear converter then give what they would have given without the jump. The
    /// equaliser and the filtering converter start afresh from silence. The filtering converter starts at the
    /// nearest whole source sample. Use a seek to cut a strip in the middle of a fade or automation, which
    /// keep their course. Costs a new placement, and with the filtering converter a new resampler.
    void seek(OutputSample position);

private:
    using RenderFunctionCall =
        std::function<void(unsigned long, Aud::Render::IteratorCreationParams&, unsigned int)>;

    /// One call of a render function. The request of the call points into this object.
    struct Call {
        unsigned long modeCode;
        /// The number of output samples.
        unsigned int count;
        RangeSample firstSample;
        /// Of firstSample in the material.
        std::int64_t position;
        /// One sample after `position`, for reverse readers, which take the end of what they read.
        std::int64_t afterPosition;
        Aud::SubSamplePos offset;
        Aud::Render::EnvelopeParameters envelope;
    };

    template <class Out>
    std::uint64_t renderThrough(Out& out, std::uint64_t count, RenderFunctionLookUp<Out> lookUp) {
        return renderThrough(
            [&out, lookUp](unsigned long code, Aud::Render::IteratorCreationParams& params, unsigned int n) {
                renderFunction<Out>(code, lookUp)(params, out, n);
            },
            count);
    }

    /// Makes as many calls as `count` samples need. Jumps back to the start after an exception.
    std::uint64_t renderThrough(const RenderFunctionCall& render, std::uint64_t count);
    /// Makes the next call, which delivers up to `count` output samples.
    void renderOnce(const RenderFunctionCall& render, std::uint64_t count);
    /// Works out the next call without changing the player: as many samples as the envelope and the converter
    /// allow, up to `count`.
    Call nextCall(std::uint64_t count) const;
    /// Fills the record for a call. Returns the request, which points to the record, the call and the player.
    Aud::Render::IteratorCreationParams fill(Aud::Render::PerSourceRecord& record, const Call& call) const;
    /// Gives the equaliser the first sample of a call that carries nothing on.
    void primeEqualiser(const Call& call);
    /// Forgets all that carries on from call to call.
    void restartAt(OutputSample position);

    const StripPlan plan_;
    Aud::SampleCache& cache_;
    RenderFunctionLookUp<Unclipped> inlined_;
    Aud::Render::PerSourceRecord record_;
    /// Refers to plan_ and record_, so both are declared before, and destroyed after.
    std::unique_ptr<StripConverter> converter_;
    /// Made anew after every jump, because the alignment counts from where the filtering converter starts.
    FadeEnvelope fade_;
    std::unique_ptr<StraightReader> reader_;
    OutputSample position_;
    /// Whether the record holds the state that the call before has left.
    bool carriesOn_ = false;
};

} // namespace audlmd
