#pragma once

#include "host/Identity.hpp"
#include "host/SampleCache.hpp"
#include "loop_modes/IteratorCreationParams.hpp"
#include "loop_modes/ModeCode.hpp"
#include "standalone/services/RenderFunctions.hpp"
#include "standalone/signal/Automation.hpp"
#include "standalone/signal/Equaliser.hpp"
#include "standalone/signal/Fade.hpp"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace audlmd {

/// Linear: straight lines between neighbouring samples; cheap, at any speed. Filtering: band-limited; clean,
/// at speeds up to the configured limit.
using Converter = Aud::Render::ConversionStage;

/// An automation and how it is walked. Its positions are source samples from the start of the range; walked
/// backwards, the first sample delivered has the level of the range's last position.
struct AutomationWalk {
    Automation automation;
    DynamicLevelDirection direction = DynamicLevelDirection::forwards;
};

/// What is played, and how.
struct StripSettings {
    Cookie cookie;
    /// In samples of the material, the end excluded. May reach beyond the material, which is silent there.
    std::int64_t from = 0;
    std::int64_t to = 0;
    /// Plays from the last sample of the range to its first.
    bool reverse = false;

    /// Up to five, in this order. None: no equaliser in the chain.
    std::vector<EqualiserBand> equaliser;
    /// Of the material. Only the equaliser needs it.
    double sampleRate = 48000.0;
    FadePlan fade;
    /// U-values of the mixer-style curve, see mixerStyleUValueOfDecibels(). The outer level and an automation
    /// take the same place in the chain.
    std::optional<float> middleLevel;
    std::optional<float> outerLevel;
    std::optional<AutomationWalk> automation;

    Converter converter = Converter::none;
    /// In source samples per output sample. Without a converter only 1.
    double speed = 1.0;

    /// Waits for samples that are not there yet; otherwise they are silence and counted.
    bool wait = true;
    /// For the cache's forward reader, see MaterialCache.
    std::uint32_t forwardArgument = 0;
    /// For the cache. Not set: the speed in force.
    std::optional<Orv::OutputGearing> gearing;
};

/// A number that the record of a render call holds, in words.
struct RecordNumber {
    std::string name;
    std::string value;
};

/// Plays one strip, as many samples at a time as asked for.
///
/// It owns all that the renderer keeps from one call to the next, and makes every stretch follow the one
/// before it without a seam: the bytes of a stretch do not depend on the calls by which it was rendered.
///
/// Output sample n stands for the source at n x speed samples into the range, so there are as many as fit
/// into it: its length divided by the speed, rounded up. That holds for either converter: the linear one is
/// started so that its lag of one sample on whole positions never shows, and the filtering one is read only
/// from the first sample that it really made. A converter and the equaliser start from silence; at the end of
/// the range a converter reads on in the material.
///
/// One thread at a time.
class StripPlayer {
public:
    /// Reads no samples yet. Throws std::invalid_argument, with a sentence for the user, for settings out of
    /// range or that cannot stand together. The cache must outlive the player.
    StripPlayer(Aud::SampleCache& cache, StripSettings settings);
    ~StripPlayer();
    StripPlayer(const StripPlayer&) = delete;
    StripPlayer& operator=(const StripPlayer&) = delete;

    /// Which names the stages that the settings need, and no others.
    unsigned long modeCode() const { return modeCode_; }
    /// Where the fades have full level: without the envelope, which would multiply by 1 there.
    unsigned long fullLevelModeCode() const { return fullLevelModeCode_; }

    /// In output samples, for the whole range.
    std::uint64_t outputLength() const { return outputLength_; }
    /// The next output sample to render.
    std::uint64_t position() const { return position_; }

    /// Source samples per output sample. Differs from the settings where the filtering converter's limits
    /// bite, or by rounding.
    double speedInForce() const { return speedInForce_; }
    /// Whether the filtering converter's limits bite.
    bool speedIsLimited() const;

    /// What the record of the next render call would hold, as far as the mode reads it.
    std::vector<RecordNumber> recordNumbers() const;

    /// Renders the next `count` samples to `out`, or those left if there are fewer, and returns how many.
    /// `Out` is one of Aud::Render::OutputTypes.
    ///
    /// Throws NoSuchMode if no library has registered the mode, UnknownMaterial, and what a wait throws.
    /// After an exception the player has jumped back, as by seek(), to where the call that failed began.
    template <class Out>
    std::uint64_t render(Out& out, std::uint64_t count) {
        return renderThrough([&out](unsigned long code, Aud::Render::IteratorCreationParams& params,
                                    unsigned int n) { renderFunction<Out>(code)(params, out, n); },
                             count);
    }

    /// Jumps to an output sample, up to outputLength(). Throws std::out_of_range.
    ///
    /// Levels, fades and the linear converter then give what they would have given without the jump. The
    /// equaliser and the filtering converter start afresh from silence, the latter at the nearest whole
    /// source sample.
    void seek(std::uint64_t outputPosition);

private:
    using RenderCall = std::function<void(unsigned long, Aud::Render::IteratorCreationParams&, unsigned int)>;

    /// One render call: where it starts, and how far it goes.
    struct Stretch {
        unsigned long modeCode;
        std::int64_t firstSample;
        /// Only where the mode has one.
        Aud::Render::EnvelopeParameters envelope;
        Aud::SubSamplePos offset;
        unsigned int count;
    };

    void chooseMode();
    void chooseSpeed();
    /// As many of `count` output samples as one call can render.
    Stretch nextStretch(std::uint64_t count) const;
    std::uint64_t renderThrough(const RenderCall& call, std::uint64_t count);
    void renderStretch(const RenderCall& call, const Stretch& stretch);
    /// Starts everything that carries on from call to call afresh, at `position_`.
    void start(const RenderCall& call);
    void primeEqualiser(std::int64_t sample);
    void closeResampler();
    /// Where the next render call's chain starts, in source samples from the start of the range.
    std::int64_t firstSample() const;
    /// Of the linear converter, for the next output sample.
    Aud::SubSamplePos readPosition() const;
    std::int64_t materialPosition(std::int64_t sample) const;
    std::int64_t levelPosition(std::int64_t sample) const;

    StripSettings settings_;
    Aud::SampleCache& cache_;
    std::int64_t rangeLength_;
    FadeEnvelope envelope_;
    Orv::OutputGearing gearing_;
    unsigned long modeCode_ = 0;
    unsigned long fullLevelModeCode_ = 0;
    /// The speed in the forms in which the converters read it.
    Aud::SubSamplePos step_{1, 0};
    float speed_ = 1.0F;
    double speedInForce_ = 1.0;
    std::uint64_t outputLength_ = 0;

    std::uint64_t position_ = 0;
    /// Whether the record's state is that after the output sample before `position_`.
    bool continues_ = false;
    Aud::Render::PerSourceRecord record_;
};

} // namespace audlmd
