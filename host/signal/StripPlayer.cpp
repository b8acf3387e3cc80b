#include "host/signal/StripPlayer.hpp"

#include "host/signal/StraightReader.hpp"
#include "host/signal/StripConverter.hpp"
#include "ole/Aud/MultiBandBiquadApplyingIterator.hpp"
#include "ole/Aud/SampleCacheIterators.hpp"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

namespace audlmd {
namespace {

/// The buffer as the library's containers, which have the same size and bytes as the numbers.
template <class Format, class Number>
std::uint64_t renderInto(StripPlayer& player, std::span<Number> samples) {
    static_assert(sizeof(Format) == sizeof(Number));
    auto* out = reinterpret_cast<Format*>(samples.data());
    return player.render(out, samples.size());
}

} // namespace

StripPlayer::StripPlayer(Aud::SampleCache& cache, StripSettings settings,
                         RenderFunctionLookUp<Unclipped> inlined)
    : plan_(std::move(settings)), cache_(cache), inlined_(inlined),
      converter_(makeStripConverter(plan_, record_.srcState)), fade_(converter_->envelopeFrom(0)),
      reader_(std::make_unique<StraightReader>(cache_, plan_.settings, plan_.gearing)) {}

StripPlayer::~StripPlayer() = default;

std::uint64_t StripPlayer::render(std::span<float> samples) {
    return renderInto<Aud::SampleF32>(*this, samples);
}

std::uint64_t StripPlayer::render(std::span<std::int16_t> samples) {
    return renderInto<Aud::SampleS16>(*this, samples);
}

std::uint64_t StripPlayer::render(std::span<std::int32_t> samples) {
    return renderInto<Aud::SampleS32>(*this, samples);
}

std::uint64_t StripPlayer::renderFloats(std::span<float> samples) {
    if (inlined_ == nullptr)
        return render(samples);
    Unclipped out{samples.data()};
    return renderThrough(out, samples.size(), inlined_);
}

std::span<const float> StripPlayer::floatsInCache(std::span<float> room) {
    if (!plan_.playsAsItIs() || inlined_ == nullptr || inlined_(plan_.fullLevelModeCode) == nullptr)
        return {};
    const RangeSample first = converter_->startOfCall(position_).sample;
    const std::uint64_t most = std::min(plan_.outputLength - static_cast<std::uint64_t>(position_.number()),
                                        static_cast<std::uint64_t>(fade_.fullLevelEnd(first) - first));
    if (most < room.size() || room.empty())
        return {};
    const std::span<const float> ready = reader_->read(plan_.inMaterial(first).number(), room);
    position_ += std::ssize(ready);
    return ready;
}

std::uint64_t StripPlayer::renderThrough(const RenderFunctionCall& render, std::uint64_t count) {
    const OutputSample begin = position_;
    const std::uint64_t left = plan_.outputLength - static_cast<std::uint64_t>(begin.number());
    const OutputSample end = begin + static_cast<std::int64_t>(std::min(count, left));
    try {
        // A call may deliver 0 samples: the one that opens the filtering converter's resampler.
        while (position_ != end)
            renderOnce(render, static_cast<std::uint64_t>(end - position_));
    } catch (...) {
        // The record may be half changed, and what the chain has read ahead is lost: a fresh start is the
        // only state that is known.
        restartAt(begin);
        throw;
    }
    return static_cast<std::uint64_t>(end - begin);
}

void StripPlayer::renderOnce(const RenderFunctionCall& render, std::uint64_t count) {
    const Call call = nextCall(count);
    Aud::Render::IteratorCreationParams params = fill(record_, call);
    // After fill(), which sets the equaliser afresh where nothing carries on.
    if (!carriesOn_ && !plan_.settings.equaliser.empty())
        primeEqualiser(call);
    render(call.modeCode, params, call.count);
    position_ += call.count;
    converter_->afterCall(record_, position_);
    carriesOn_ = true;
}

StripPlayer::Call StripPlayer::nextCall(std::uint64_t count) const {
    const CallStart start = converter_->startOfCall(position_);
    const auto position = plan_.inMaterial(start.sample).number();
    Call call{.modeCode = plan_.fullLevelModeCode,
              .count = 0,
              .firstSample = start.sample,
              .position = position,
              .afterPosition = position + 1,
              .offset = start.offset,
              .envelope = {}};
    // Full level needs no envelope. Anywhere else the envelope is placed, up to the next change of the slope.
    RangeSample end = fade_.fullLevelEnd(start.sample);
    if (end == start.sample) {
        const FadeEnvelope::Placement placement = fade_.at(start.sample);
        call.modeCode = plan_.modeCode;
        call.envelope = placement.parameters;
        end = placement.end;
    }
    call.envelope.levelUValue = plan_.settings.middleLevel.value_or(1.0F);
    call.count =
        static_cast<unsigned int>(std::min({count, converter_->mostOutputs(position_, end), longestCall}));
    return call;
}

Aud::Render::IteratorCreationParams StripPlayer::fill(Aud::Render::PerSourceRecord& record,
                                                      const Call& call) const {
    const StripSettings& settings = plan_.settings;
    record.strip = ce_handle(settings.cookie);
    record.envelope = call.envelope;
    record.outerLevelUValue = settings.outerLevel.value_or(1.0F);
    if (!carriesOn_)
        record.equaliser = plan_.equaliser;
    // The state of a walk that carries on is left alone: the library has moved the state along with the
    // samples.
    if (settings.automation && !(carriesOn_ && converter_->levelCarriesOn()))
        settings.automation->automation.place(record.dynamicLevel, plan_.automationPosition(call.firstSample),
                                              settings.automation->direction);
    return {.source = &record,
            .startPosition = &call.position,
            .requestFlag = &settings.wait,
            .forwardArgument = &settings.forwardArgument,
            .forwardFilteringStartPosition = &call.position,
            // A reverse reader is given the end of what it reads. Without the filtering converter the
            // library adds the one.
            .reverseFilteringStartPosition = &call.afterPosition,
            .subSampleStart = &call.offset,
            .subSampleStep = &plan_.step,
            .speed = &plan_.speed,
            .gearing = &plan_.gearing,
            .cache = &cache_};
}

/// A chain reads the equaliser's last result before the first sample that the chain filters. Here the
/// equaliser filters that sample.
void StripPlayer::primeEqualiser(const Call& call) {
    const StripSettings& settings = plan_.settings;
    const bool wait = settings.wait;
    const float first =
        settings.reverse ? *Aud::SampleCache::ReverseIterator(settings.cookie, call.afterPosition, wait,
                                                              cache_, !wait, plan_.gearing)
                         : *Aud::SampleCache::ForwardIterator(settings.cookie, call.position, wait, cache_,
                                                              settings.forwardArgument, !wait, plan_.gearing);
    record_.equaliser.processSample(first);
}

std::vector<RecordNumber> StripPlayer::recordNumbers() const {
    const Call call = nextCall(plan_.outputLength - static_cast<std::uint64_t>(position_.number()));
    // A copy, because filling the record changes what carries on.
    Aud::Render::PerSourceRecord record = record_;
    std::vector<Aud::Filter::Biquad::Coefficients> sections;
    for (const EqualiserBand& band : plan_.settings.equaliser)
        sections.push_back(sectionOf(band, plan_.settings.sampleRate));
    return audlmd::recordNumbers(fill(record, call), call.modeCode, sections);
}

void StripPlayer::seek(OutputSample position) {
    if (position < 0 || static_cast<std::uint64_t>(position.number()) > plan_.outputLength)
        throw std::out_of_range("output sample " + std::to_string(position.number()) +
                                " does not lie among the " + std::to_string(plan_.outputLength) +
                                " of the strip");
    restartAt(position);
}

void StripPlayer::restartAt(OutputSample position) {
    position_ = position;
    carriesOn_ = false;
    converter_->restart();
    fade_ = converter_->envelopeFrom(position);
}

} // namespace audlmd
