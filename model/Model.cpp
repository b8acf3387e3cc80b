#include "model/Model.hpp"

#include "host/GainCurveNodes.hpp"
#include "model/Source.hpp"
#include "ole/Aud/SpeedLimit.hpp"

#include <bit>
#include <cstring>
#include <memory>

namespace audlmd::model {
namespace {

using Aud::Render::IteratorCreationParams;
using Aud::Render::PerSourceRecord;

/// What a layer does. The order matters: the four shapes from simpleRamp to rampHoldRamp stand together.
enum class Kind { pass, equaliser, simpleRamp, rampHold, holdRamp, rampHoldRamp, fixed, dynamic };

/// The layers that a middle digit names, inner to outer: simple ramps by their curve, (r)amp-hold,
/// (h)old-ramp, (t)wo ramps, (f)ixed level, (n)othing.
constexpr const char* middleLayers[12] = {"n", "f", "2", "3", "2f", "3f", "r", "h", "t", "rf", "hf", "tf"};

/// The gain at a u-value, by the contract's curve numbers: 1 linear, 2 mixer-style, 3 constant power. A
/// u-value above the limit reads as the limit, a negative one as 0. The node is found by a true division.
float gainOf(std::uint32_t curve, float u) {
    if (curve == 1 || u != u)
        return u;
    const bool mixer = curve == 2;
    const Aud::GainCurve::CurveNode* const nodes =
        mixer ? Aud::GainCurve::MixerStyleLog1_Private::UVal2Mag_CurveNodes
              : Aud::GainCurve::ConstantPower1_Private::UVal2Mag_CurveNodes;
    // By their bits: 1.5 and 1.0, 0.001 and 0.01 in single precision.
    const float limit = std::bit_cast<float>(mixer ? 0x3FC00000U : 0x3F800000U);
    const float spacing = std::bit_cast<float>(mixer ? 0x3A83126FU : 0x3C23D70AU);
    const int lastNode = mixer ? 1501 : 100;
    int node = 0;
    if (u > limit) {
        u = limit;
        node = mixer ? 1499 : 100;
    } else if (u < 0.0F) {
        u = 0.0F;
    } else {
        node = static_cast<int>(u / spacing);
        node = node > lastNode ? lastNode : node;
    }
    return (u - nodes[node].uValue) * nodes[node].slope + nodes[node].magnitude;
}

/// One layer over the source, with the state of every kind: curves and steps of the first and the last ramp,
/// and the samples left in the first ramp and in the hold.
struct Layer {
    Kind kind = Kind::pass;
    std::uint32_t firstCurve = 0, lastCurve = 0;
    float uValue = 0.0F, step = 0.0F, lastStep = 0.0F, gain = 0.0F;
    std::uint32_t ramping = 0, holding = 0;
};

/// The chain of one render call, inner to outer: the source, the layers in a list, and at most one converter.
class Chain {
public:
    /// Takes every value of the request before the first operation of the host, because the host may change
    /// its record then.
    Chain(unsigned int code, const IteratorCreationParams& params, Host& host)
        : digits_(code), record_(*params.source), outerLevelUValue_(record_.outerLevelUValue), host_(host) {
        std::memcpy(envelope_, &record_.envelope, sizeof envelope_);
        const SourceRequest request = sourceRequest(params);
        if (digits_.conversion != 0)
            offset_ = *params.subSampleStart;
        if (digits_.conversion == 1)
            subSampleStep_ = *params.subSampleStep;
        if (digits_.conversion == 2)
            speed_ = *params.speed;

        host_.stripCookie();
        source_ = std::make_unique<Source>(host_, request);
        add({digits_.filter == 1 ? Kind::equaliser : Kind::pass});
        for (const char* layer = middleLayers[digits_.middle]; *layer != '\0'; ++layer)
            addMiddle(*layer);
        addOuter();
        if (digits_.conversion != 0)
            convert();
    }

    /// The current sample. The linear converter weighs its right neighbour by 2^-30 per fraction, although a
    /// sample has 2^30 - 1 fractions; its left term is in double precision.
    float read() {
        if (digits_.conversion == 2)
            return record_.srcState.outSample;
        if (digits_.conversion == 0)
            return readLayer(layers_.size());
        const float weight = static_cast<float>(fraction_) * 9.313225746154785e-10F;
        const float right = weight * right_;
        return static_cast<float>((1.0 - static_cast<double>(weight)) * static_cast<double>(left_) +
                                  static_cast<double>(right));
    }

    /// Moves on by one output sample.
    void step() {
        if (digits_.conversion == 2)
            resampleOne();
        else if (digits_.conversion == 1)
            advance(subSampleStep_.sample, subSampleStep_.fraction);
        else
            stepLayer(layers_.size());
    }

    /// Ends the render call, also where an exception ends it.
    void finish() {
        if (digits_.conversion != 2)
            return;
        record_.srcState.nextSourcePos = source_->position;
        record_.srcState.positionRecorded = 1;
    }

private:
    static constexpr std::int32_t one = 1073741823;

    // The envelope as the contract counts its ten words: 0 elapsed, 1 start, 2 level, 3 type, 4 and on the
    // shape's.
    std::uint32_t word(std::size_t i) const { return envelope_[i]; }
    float number(std::size_t i) const { return std::bit_cast<float>(envelope_[i]); }

    /// The start position is another field with the filtering converter. Without that converter, a reverse
    /// source starts one sample further on.
    SourceRequest sourceRequest(const IteratorCreationParams& params) const {
        const bool forward = digits_.direction == 1;
        const bool flag = *params.requestFlag;
        SourceRequest request{forward, 0, flag, !flag, forward ? *params.forwardArgument : 0};
        if (digits_.conversion != 2)
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
            if (digits_.conversion == 1)
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

    [[noreturn]] void fail(const char* message, int line) {
        host_.recordException();
        throw RuntimeError{message, line};
    }

    void addMiddle(char layer) {
        switch (layer) {
        case 'n':
            return add({Kind::pass});
        case 'f':
            return addFixed(number(2));
        case '2':
        case '3': {
            Layer ramp{Kind::simpleRamp};
            ramp.lastCurve = static_cast<std::uint32_t>(layer - '0');
            ramp.lastStep = number(4);
            ramp.uValue = number(1) + static_cast<float>(word(0)) * number(4);
            return add(ramp);
        }
        case 'r':
            return addShape(Kind::rampHold, 4, 615);
        case 'h':
            return addShape(Kind::holdRamp, 5, 642);
        default:
            return addShape(Kind::rampHoldRamp, 6, 669);
        }
    }

    void addFixed(float u) {
        Layer level{Kind::fixed};
        level.gain = gainOf(2, u);
        add(level);
    }

    /// Adds a stored shape, whose parameters must have the type `tag`, and places it where `elapsed` samples
    /// are past. `line` is the line number of the exception.
    void addShape(Kind kind, std::uint32_t tag, int line) {
        if (word(3) != tag)
            fail("Mismatched EnvelopePrameters type!", line);
        const bool two = kind == Kind::rampHoldRamp;
        Layer shape{kind};
        shape.firstCurve = two ? word(8) : word(6);
        shape.lastCurve = two ? word(9) : word(6);
        for (std::uint32_t curve : {shape.firstCurve, shape.lastCurve})
            if (curve < 1 || curve > 3)
                fail("Unexpected Aud::GainCurve type!", 304);
        shape.step = number(4);
        shape.lastStep = two ? number(5) : number(4);
        const std::uint32_t ramp = kind == Kind::rampHold ? word(5) : two ? word(6) : 0;
        const std::uint32_t hold = kind == Kind::holdRamp ? word(5) : two ? word(7) : 0;
        std::uint32_t elapsed = word(0);
        shape.uValue = number(1);
        if (kind != Kind::holdRamp) {
            const std::uint32_t past = elapsed < ramp ? elapsed : ramp;
            shape.uValue = shape.uValue + static_cast<float>(past) * shape.step;
            shape.ramping = ramp - past;
            elapsed -= past;
        }
        if (kind != Kind::rampHold) {
            if (elapsed <= hold) {
                shape.holding = hold - elapsed;
            } else {
                shape.uValue = shape.uValue + static_cast<float>(elapsed - hold) * shape.lastStep;
            }
        }
        add(shape);
    }

    void addOuter() {
        if (digits_.level == 0)
            return add({Kind::pass});
        if (digits_.level == 2)
            return addFixed(outerLevelUValue_);
        host_.bindLevel();
        add({Kind::dynamic});
    }

    /// The value after the `count` innermost layers.
    float readLayer(std::size_t count) {
        if (count == 0)
            return source_->read();
        const Layer& layer = layers_[count - 1];
        if (layer.kind == Kind::equaliser)
            return host_.lastResult(4);
        const float x = readLayer(count - 1);
        switch (layer.kind) {
        case Kind::simpleRamp:
        case Kind::holdRamp:
            return gainOf(layer.lastCurve, layer.uValue) * x;
        case Kind::rampHold:
        case Kind::rampHoldRamp:
            return gainOf(layer.ramping != 0 ? layer.firstCurve : layer.lastCurve, layer.uValue) * x;
        case Kind::fixed:
            return x * layer.gain;
        case Kind::dynamic:
            return gainOf(2, record_.dynamicLevel.uValue) * x;
        default:
            return x;
        }
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
            for (unsigned int band = 0; band < 5; ++band)
                x = host_.filter(band, x);
        } else if (layer.kind >= Kind::simpleRamp && layer.kind <= Kind::rampHoldRamp) {
            if (layer.ramping != 0) {
                layer.uValue += layer.step;
                --layer.ramping;
            } else if (layer.holding != 0) {
                --layer.holding;
            } else if (layer.kind != Kind::rampHold) {
                layer.uValue += layer.lastStep;
            }
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
        const std::uint32_t left = 64 - state.readIndex;
        int used = 0;
        host_.resample(state.handle, state.factor, &state.sourceBlock[state.readIndex],
                       static_cast<int>(left), &used, &state.outSample);
        const std::uint32_t n = state.readIndex + static_cast<std::uint32_t>(used);
        if (n > 63)
            refill();
        else
            state.readIndex = n;
    }

    Digits digits_;
    PerSourceRecord& record_;
    // The values of the request.
    std::uint32_t envelope_[10] = {};
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
