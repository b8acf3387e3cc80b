#include "model/Model.hpp"

#include "model/Layer.hpp"
#include "model/Source.hpp"
#include "ole/Aud/SpeedLimit.hpp"

#include <cstring>
#include <memory>

namespace audlmd::model {
namespace {

using Aud::Render::IteratorCreationParams;
using Aud::Render::PerSourceRecord;

// The digits of a mode code.
constexpr unsigned int noConversion = 0, linearConversion = 1, filteringConversion = 2;
constexpr unsigned int noLevel = 0, fixedLevel = 2;

constexpr unsigned int bands = 5;
/// Source samples that the filtering converter reads ahead in one go.
constexpr std::uint32_t block = 64;

/// The chain of one render call, inner to outer: the source, the layers in a list, and at most one converter.
class Chain {
public:
    /// Takes every value of the request before the first operation of the host, because the host may change
    /// its record then.
    Chain(unsigned int code, const IteratorCreationParams& params, Host& host)
        : digits_(code), record_(*params.source), outerLevelUValue_(record_.outerLevelUValue), host_(host) {
        std::memcpy(envelope_.words.data(), &record_.envelope, sizeof envelope_.words);
        const SourceRequest request = sourceRequest(params);
        if (digits_.conversion != noConversion)
            offset_ = *params.subSampleStart;
        if (digits_.conversion == linearConversion)
            subSampleStep_ = *params.subSampleStep;
        if (digits_.conversion == filteringConversion)
            speed_ = *params.speed;

        host_.stripCookie();
        source_ = std::make_unique<Source>(host_, request);
        add({.kind = digits_.filter == 1 ? Kind::equaliser : Kind::pass});
        for (const Kind kind : middleLayers(digits_.middle))
            add(middleLayer(kind));
        addOuter();
        if (digits_.conversion != noConversion)
            convert();
    }

    /// The current sample. The linear converter weighs its right neighbour by 2^-30 per fraction, although a
    /// sample has 2^30 - 1 fractions; its left term is in double precision.
    float read() {
        if (digits_.conversion == filteringConversion)
            return record_.srcState.outSample;
        if (digits_.conversion == noConversion)
            return readLayer(layers_.size());
        const float weight = static_cast<float>(fraction_) * 9.313225746154785e-10F;
        const float right = weight * right_;
        return static_cast<float>((1.0 - static_cast<double>(weight)) * static_cast<double>(left_) +
                                  static_cast<double>(right));
    }

    /// Moves on by one output sample.
    void step() {
        if (digits_.conversion == filteringConversion)
            resampleOne();
        else if (digits_.conversion == linearConversion)
            advance(subSampleStep_.sample, subSampleStep_.fraction);
        else
            stepLayer(layers_.size());
    }

    /// Ends the render call, also where an exception ends it.
    void finish() {
        if (digits_.conversion != filteringConversion)
            return;
        record_.srcState.nextSourcePos = source_->position;
        record_.srcState.positionRecorded = 1;
    }

private:
    static constexpr std::int32_t one = 1073741823;

    /// The start position is another field with the filtering converter. Without that converter, a reverse
    /// source starts one sample further on.
    SourceRequest sourceRequest(const IteratorCreationParams& params) const {
        const bool forward = digits_.direction == 1;
        const bool flag = *params.requestFlag;
        SourceRequest request{forward, 0, flag, !flag, forward ? *params.forwardArgument : 0};
        if (digits_.conversion != filteringConversion)
            request.position = wrap(*params.startPosition, forward ? 0 : 1);
        else
            request.position =
                forward ? *params.forwardFilteringStartPosition : *params.reverseFilteringStartPosition;
        return request;
    }

    void convert() {
        const std::unique_ptr<Source> before = std::move(source_);
        source_ = std::make_unique<Source>(*before);
        try {
            if (digits_.conversion == linearConversion)
                startLinear();
            else
                startFiltering();
        } catch (...) {
            source_.reset(); // The converter's copy goes before the one that it was copied from.
            throw;
        }
    }

    /// Puts a layer on top: it copies the source, and the copy that the layer below held is destroyed.
    void add(const Layer& layer) {
        auto copy = std::make_unique<Source>(*source_);
        source_ = std::move(copy);
        layers_.push_back(layer);
    }

    Layer middleLayer(Kind kind) {
        if (kind == Kind::pass)
            return {};
        return kind == Kind::fixed ? fixedLayer(envelope_.number(Envelope::levelUValue))
                                   : envelopeLayer(kind, envelope_, host_);
    }

    void addOuter() {
        if (digits_.level == noLevel)
            return add({});
        if (digits_.level == fixedLevel)
            return add(fixedLayer(outerLevelUValue_));
        host_.bindLevel();
        add({.kind = Kind::dynamic});
    }

    /// The value after the `count` innermost layers.
    float readLayer(std::size_t count) {
        if (count == 0)
            return source_->read();
        const Layer& layer = layers_[count - 1];
        if (layer.kind == Kind::equaliser)
            return host_.lastResult(bands - 1);
        const float x = readLayer(count - 1);
        return layer.kind == Kind::dynamic ? gainOf(Curve::mixerStyle, record_.dynamicLevel.uValue) * x
                                           : layer.apply(x);
    }

    /// Steps the `count` innermost layers. The automation moves before the layers below it, all others after.
    void stepLayer(std::size_t count) {
        if (count == 0)
            return source_->step();
        Layer& layer = layers_[count - 1];
        if (layer.kind == Kind::dynamic)
            stepLevel();
        stepLayer(count - 1);
        if (layer.kind == Kind::equaliser) {
            float x = source_->read();
            for (unsigned int band = 0; band < bands; ++band)
                x = host_.filter(band, x);
        } else if (layer.kind != Kind::dynamic) {
            layer.advance();
        }
    }

    /// Moves the automation by one sample. The sample that reaches a node is stepped too; the node replaces
    /// the result.
    void stepLevel() {
        auto& level = record_.dynamicLevel;
        if (level.stationary != 0)
            return;
        level.samplesToNextNode -= 1;
        level.uValue += level.uValueStep;
        if (level.samplesToNextNode != 0)
            return;
        const LevelSegment next = host_.nextLevel(digits_.levelDirection == 1);
        level.samplesToNextNode = next.samples;
        level.uValue = next.uValue;
        level.uValueStep = next.uValueStep;
        level.stationary = next.stationary;
    }

    static bool isPositive(const Aud::SubSamplePos& offset) {
        return offset.sample > 0 || (offset.sample == 0 && offset.fraction > 0);
    }

    /// Reads two samples; the converter stands on the first. A start offset of 0 or less has no effect.
    void startLinear() {
        left_ = readLayer(layers_.size());
        stepLayer(layers_.size());
        right_ = readLayer(layers_.size());
        if (isPositive(offset_))
            advance(offset_.sample, offset_.fraction);
    }

    /// Moves the linear converter. Its right neighbour is read when the position passes it, not when the
    /// position reaches it: hence the lag of one sample on whole positions.
    void advance(std::int64_t samples, std::int32_t fractions) {
        sample_ += samples;
        fraction_ += fractions;
        if (fraction_ >= one) {
            fraction_ -= one;
            sample_ += 1;
        }
        while (sample_ > rightSample_ || (sample_ == rightSample_ && fraction_ > 0)) {
            left_ = right_;
            stepLayer(layers_.size());
            right_ = readLayer(layers_.size());
            ++rightSample_;
        }
    }

    /// Bounds the factor, output samples per source sample. A NaN passes.
    static double bound(double factor) {
        const double least = 1.0 / cfgAudioPlaybackSpeedLimit;
        const double atMost = 1024.0 < factor ? 1024.0 : factor;
        return least > atMost ? least : atMost;
    }

    /// Opens the resampler and skips the start offset only where the record says that none is open: every
    /// byte but 0 says that one is.
    void startFiltering() {
        auto& state = record_.srcState;
        if (state.opened == 0) {
            state.handle = host_.openResampler(0, 1.0 / cfgAudioPlaybackSpeedLimit, 1024.0);
            refill();
            state.opened = 1;
            if (isPositive(offset_)) {
                state.factor =
                    bound(1.0 / (static_cast<double>(offset_.sample) + offset_.fraction / 1073741823.0));
                resampleOne();
            }
        }
        state.factor = bound(1.0 / static_cast<double>(speed_));
    }

    /// Reads a whole block of source samples ahead.
    void refill() {
        for (float& sample : record_.srcState.sourceBlock) {
            sample = readLayer(layers_.size());
            stepLayer(layers_.size());
        }
        record_.srcState.readIndex = 0;
    }

    /// Asks the resampler for one output sample. Where it gives none, the one before stands.
    void resampleOne() {
        auto& state = record_.srcState;
        const std::uint32_t left = block - state.readIndex;
        int used = 0;
        host_.resample(state.handle, state.factor, &state.sourceBlock[state.readIndex],
                       static_cast<int>(left), &used, &state.outSample);
        const std::uint32_t n = state.readIndex + static_cast<std::uint32_t>(used);
        if (n >= block)
            refill();
        else
            state.readIndex = n;
    }

    Digits digits_;
    PerSourceRecord& record_;
    // The values of the request.
    Envelope envelope_;
    float outerLevelUValue_;
    Aud::SubSamplePos offset_{0, 0}, subSampleStep_{0, 0};
    float speed_ = 0.0F;

    Host& host_;
    std::unique_ptr<Source> source_;
    std::vector<Layer> layers_;

    // The linear converter: its two neighbours, its position, and the position of the right neighbour.
    float left_ = 0.0F, right_ = 0.0F;
    std::int64_t sample_ = 0, rightSample_ = 1;
    std::int32_t fraction_ = 0;
};

} // namespace

void render(unsigned int code, std::size_t outputType, const IteratorCreationParams& params, Host& host,
            std::uint8_t*& position, unsigned int count) {
    Chain chain(code, params, host);
    try {
        for (unsigned int i = 0; i < count; ++i) {
            deliver(outputType, chain.read(), position);
            position += containerBytes[outputType % 7];
            chain.step();
        }
    } catch (...) {
        chain.finish();
        throw;
    }
    chain.finish();
}

} // namespace audlmd::model
