#include "model/Model.hpp"

#include "host/GainCurveNodes.hpp"
#include "model/ModelModes.hpp"
#include "model/StoredSample.hpp"
#include "ole/Aud/SpeedLimit.hpp"

#include <cstring>

namespace Test {
namespace {

using Aud::Render::IteratorCreationParams;
using Aud::Render::PerSourceRecord;

enum class Kind { source, pass, equaliser, simpleRamp, rampHold, holdRamp, rampHoldRamp, fixed, dynamic };

/// The layers that a middle digit names, inner to outer: simple ramps by their curve, (r)amp-hold,
/// (h)old-ramp, (t)wo ramps, (f)ixed level, (n)othing.
constexpr const char* middleLayers[12] = {"n", "f", "2", "3", "2f", "3f", "r", "h", "t", "rf", "hf", "tf"};

template <class Integer>
Integer wrap(Integer value, std::int64_t addend) {
    return static_cast<Integer>(static_cast<std::uint64_t>(value) + static_cast<std::uint64_t>(addend));
}

float gainOf(std::uint32_t curve, float u) {
    if (curve == 1 || u != u)
        return u;
    const bool mixer = curve == 2;
    const Aud::GainCurve::CurveNode* const nodes =
        mixer ? Aud::GainCurve::MixerStyleLog1_Private::UVal2Mag_CurveNodes
              : Aud::GainCurve::ConstantPower1_Private::UVal2Mag_CurveNodes;
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

/// A segment handle, whose copies the host counts.
class Segment {
public:
    Segment(Script& script, int number) : script_(&script), number_(number) { script_->makeSegment(); }
    Segment(const Segment& other) : script_(other.script_), number_(other.number_) {
        script_->copySegment(number_);
    }
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): the host counts one to itself too
    Segment& operator=(const Segment& other) {
        script_->assignSegment(number_, other.number_);
        number_ = other.number_;
        return *this;
    }
    ~Segment() { script_->destroySegment(number_); }

    int number() const { return number_; }
    /// The host's own change.
    void rebind(int number) { number_ = number; }

private:
    Script* script_;
    int number_;
};

/// One copy of the host's iterator.
struct Source {
    Source(Script& host, const IteratorCreationParams& params, bool readsForward, std::int64_t start)
        : script(host), forward(readsForward), position(start), length(host.materialLength),
          place(host.makeIterator(forward, start,
                                  Script::rightObjects |
                                      (forward ? std::uint64_t{*params.forwardArgument} << 32 : 0) |
                                      (*params.requestFlag ? 2U : 1U))),
          current((host.beginHostWork(), host), place.segment), waits(*params.requestFlag) {
        for (std::uint32_t i = 0; forward && i < *params.forwardArgument; ++i)
            held.emplace_back(host, static_cast<int>(i));
        host.endHostWork();
    }
    Source(const Source&) = default;
    Source& operator=(const Source&) = delete;
    ~Source() { script.note(forward ? Op::destroyForward : Op::destroyReverse, 0); }

    float read() const {
        const int segment = current.number();
        if (script.status(segment) == 2 && waits)
            waitFor(segment);
        if (script.status(segment) == 1)
            return script.samples(segment)[place.index];
        if (0 <= position && position < length)
            script.underrun();
        return 0.0F;
    }

    void step() {
        const std::int64_t old = position;
        position = wrap(old, forward ? 1 : -1);
        if (forward)
            stepForward();
        else
            stepReverse(old);
    }

    Script& script;
    bool forward;
    std::int64_t position;
    std::int64_t length;
    Place place;
    Segment current;
    bool waits;
    std::vector<Segment> held;

private:
    void waitFor(int segment) const {
        struct Event {
            explicit Event(Script& host, int number) : script(host) { script.requestEvent(number); }
            Event(const Event&) = delete;
            Event& operator=(const Event&) = delete;
            ~Event() {
                script.note(Op::releaseEvent, script.keepsEvents ? 1 : 0);
                if (!script.keepsEvents)
                    script.note(Op::destroyEvent, 0);
            }
            Script& script;
        } event(script, segment);
        script.wait(segment, 0xFFFFFFFF);
    }

    void moveTo(Place there) {
        place = there;
        current.rebind(there.segment);
    }

    void leave() { current = Segment(script, -1); }

    void stepForward() {
        if (position < 0 || position > length)
            return;
        if (position == 0)
            return moveTo(script.hitFirst());
        if (position == length)
            return leave();
        place.index = wrap(place.index, 1);
        if (script.status(current.number()) == 7)
            return;
        if (place.index >= script.length(current.number()))
            moveTo(script.moveForward(place.segment));
    }

    void stepReverse(std::int64_t old) {
        if (position < -1 || position >= length)
            return;
        if (old == length)
            return moveTo(script.hitLast());
        if (position == -1)
            return leave();
        place.index = wrap(place.index, -1);
        if (place.index == -1)
            moveTo(script.moveReverse(place.segment));
    }
};

/// One layer over the source, with the state of whatever kind it is.
struct Layer {
    Kind kind = Kind::pass;
    std::uint32_t firstCurve = 0, lastCurve = 0;
    float uValue = 0.0F, step = 0.0F, lastStep = 0.0F, gain = 0.0F;
    std::uint32_t ramping = 0, holding = 0;
};

class Chain {
public:
    Chain(unsigned int code, const IteratorCreationParams& params, Script& script)
        : digits_(code), record_(*params.source), script_(script) {
        std::memcpy(envelope_, &record_.envelope, sizeof envelope_);
        script_.call(Op::stripCookie, 0);
        const bool forward = digits_.direction == 1;
        const std::int64_t start = digits_.conversion == 2 ? (forward ? *params.forwardFilteringStartPosition
                                                                      : *params.reverseFilteringStartPosition)
                                                           : wrap(*params.startPosition, forward ? 0 : 1);
        source_ = std::make_unique<Source>(script_, params, forward, start);
        add({digits_.filter == 1 ? Kind::equaliser : Kind::pass});
        for (const char* layer = middleLayers[digits_.middle]; *layer != '\0'; ++layer)
            addMiddle(*layer);
        addOuter();
        if (digits_.conversion == 0)
            return;
        const std::unique_ptr<Source> before = std::move(source_);
        source_ = std::make_unique<Source>(*before);
        try {
            if (digits_.conversion == 1)
                startLinear(*params.subSampleStart, *params.subSampleStep);
            else
                startFiltering(*params.subSampleStart, *params.speed);
        } catch (...) {
            source_.reset(); // The converter's copy goes before the one that it was copied from.
            throw;
        }
    }

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

    void step() {
        if (digits_.conversion == 2)
            resampleOne();
        else if (digits_.conversion == 1)
            advance(stepSample_, stepFraction_);
        else
            stepLayer(layers_.size());
    }

    /// The end of a render call, however it ends.
    void finish() {
        if (digits_.conversion != 2)
            return;
        record_.srcState.nextSourcePos = source_->position;
        record_.srcState.positionRecorded = 1;
    }

private:
    static constexpr std::int32_t one = 1073741823;

    std::uint32_t word(std::size_t i) const { return envelope_[i]; }
    float number(std::size_t i) const { return std::bit_cast<float>(envelope_[i]); }

    /// A layer copies the one below, whose copy of the source then goes.
    void add(const Layer& layer) {
        auto copy = std::make_unique<Source>(*source_);
        source_ = std::move(copy);
        layers_.push_back(layer);
    }

    [[noreturn]] void fail(const char* message, int line) {
        script_.note(Op::recordException, 0);
        throw ModelRuntimeError{message, line};
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
            return addFixed(record_.outerLevelUValue);
        script_.call(Op::bindLevel, 1);
        add({Kind::dynamic});
    }

    /// The value after the `count` innermost layers.
    float readLayer(std::size_t count) {
        if (count == 0)
            return source_->read();
        const Layer& layer = layers_[count - 1];
        if (layer.kind == Kind::equaliser)
            return script_.biquadResult(4);
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
                x = script_.biquad(band, x);
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

    void stepLevel() {
        auto& level = record_.dynamicLevel;
        if (level.stationary != 0)
            return;
        level.samplesToNextNode -= 1;
        level.uValue += level.uValueStep;
        if (level.samplesToNextNode != 0)
            return;
        const LevelSegment next = script_.nextLevel(digits_.levelDirection == 1);
        level.samplesToNextNode = next.samples;
        level.uValue = next.uValue;
        level.uValueStep = next.uValueStep;
        level.stationary = next.stationary;
    }

    static bool isPositive(const Aud::SubSamplePos& offset) {
        return offset.sample > 0 || (offset.sample == 0 && offset.fraction > 0);
    }

    void startLinear(const Aud::SubSamplePos& start, const Aud::SubSamplePos& step) {
        left_ = readLayer(layers_.size());
        stepLayer(layers_.size());
        right_ = readLayer(layers_.size());
        if (isPositive(start))
            advance(start.sample, start.fraction);
        stepSample_ = step.sample;
        stepFraction_ = step.fraction;
    }

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

    static double bound(double factor) {
        const double least = 1.0 / cfgAudioPlaybackSpeedLimit;
        const double atMost = 1024.0 < factor ? 1024.0 : factor;
        return least > atMost ? least : atMost;
    }

    void startFiltering(const Aud::SubSamplePos& start, float speed) {
        auto& state = record_.srcState;
        if (state.opened == 0) {
            state.handle = script_.openResampler(0, 1.0 / cfgAudioPlaybackSpeedLimit, 1024.0);
            refill();
            state.opened = 1;
            if (isPositive(start)) {
                state.factor =
                    bound(1.0 / (static_cast<double>(start.sample) + start.fraction / 1073741823.0));
                resampleOne();
            }
        }
        state.factor = bound(1.0 / static_cast<double>(speed));
    }

    void refill() {
        for (float& sample : record_.srcState.sourceBlock) {
            sample = readLayer(layers_.size());
            stepLayer(layers_.size());
        }
        record_.srcState.readIndex = 0;
    }

    void resampleOne() {
        auto& state = record_.srcState;
        const std::uint32_t left = 64 - state.readIndex;
        int used = 0;
        script_.resample(state.handle, state.factor, &state.sourceBlock[state.readIndex],
                         static_cast<int>(left), &used, &state.outSample,
                         std::uint64_t{state.readIndex} << 32 | std::uint64_t{left} << 8 | 1);
        const std::uint32_t n = state.readIndex + static_cast<std::uint32_t>(used);
        if (n > 63)
            refill();
        else
            state.readIndex = n;
    }

    Digits digits_;
    PerSourceRecord& record_;
    Script& script_;
    std::uint32_t envelope_[10] = {};
    std::unique_ptr<Source> source_;
    std::vector<Layer> layers_;

    // The linear converter.
    float left_ = 0.0F, right_ = 0.0F;
    std::int64_t sample_ = 0, rightSample_ = 1, stepSample_ = 0;
    std::int32_t fraction_ = 0, stepFraction_ = 0;
};

} // namespace

void modelRender(unsigned int code, std::size_t outputType, const IteratorCreationParams& params,
                 Script& script, std::uint8_t*& position, unsigned int count) {
    Chain chain(code, params, script);
    try {
        for (unsigned int i = 0; i < count; ++i) {
            modelDeliver(outputType, chain.read(), position);
            position += containerBytes[outputType % 7];
            chain.step();
        }
    } catch (...) {
        chain.finish();
        throw;
    }
    chain.finish();
}

} // namespace Test
