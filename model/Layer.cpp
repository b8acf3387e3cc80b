#include "model/Layer.hpp"

#include "contract/GainCurveNodes.hpp"
#include "model/Model.hpp"

#include <algorithm>

namespace audlmd::model {
namespace {

/// The numbers by which an envelope names its shape.
enum class EnvelopeType : std::uint32_t { rampHold = 4, holdRamp = 5, rampHoldRamp = 6 };

// The lines of the library's exceptions.
constexpr int lineOfNoRampHold = 615;
constexpr int lineOfNoHoldRamp = 642;
constexpr int lineOfNoRampHoldRamp = 669;
constexpr int lineOfUnknownCurve = 304;

[[noreturn]] void fail(const char* message, int line, Host& host) {
    host.recordException();
    throw RuntimeError{message, line};
}

void requireType(EnvelopeType type, int line, const Envelope& envelope, Host& host) {
    if (envelope.whole(Envelope::type) != static_cast<std::uint32_t>(type))
        fail("Mismatched EnvelopePrameters type!", line, host);
}

Curve requiredCurve(Envelope::Word word, const Envelope& envelope, Host& host) {
    const auto curve = static_cast<Curve>(envelope.whole(word));
    if (curve != Curve::linear && curve != Curve::mixerStyle && curve != Curve::constantPower)
        fail("Unexpected Aud::GainCurve type!", lineOfUnknownCurve, host);
    return curve;
}

Layer endlessRamp(Kind kind, const Envelope& envelope) {
    Layer ramp{.kind = kind};
    ramp.lastCurve = kind == Kind::mixerStyleRamp ? Curve::mixerStyle : Curve::constantPower;
    ramp.lastStep = envelope.number(Envelope::step);
    ramp.uValue = envelope.number(Envelope::startUValue) +
                  static_cast<float>(envelope.whole(Envelope::elapsed)) * ramp.lastStep;
    return ramp;
}

/// The elapsed samples are past the ramp first, then past the hold, and the rest of them in the last ramp.
Layer passed(Layer shape, std::uint32_t elapsed) {
    const std::uint32_t past = std::min(elapsed, shape.ramping);
    if (shape.kind != Kind::holdRamp)
        shape.uValue += static_cast<float>(past) * shape.step;
    shape.ramping -= past;
    elapsed -= past;
    if (shape.kind == Kind::rampHold)
        return shape;
    if (elapsed > shape.holding)
        shape.uValue += static_cast<float>(elapsed - shape.holding) * shape.lastStep;
    shape.holding -= std::min(elapsed, shape.holding);
    return shape;
}

} // namespace

float gainOf(Curve curve, float u) {
    if (curve == Curve::linear || u != u)
        return u;
    const bool mixer = curve == Curve::mixerStyle;
    const Aud::GainCurve::CurveNode* const nodes =
        mixer ? Aud::GainCurve::MixerStyleLog1_Private::UVal2Mag_CurveNodes
              : Aud::GainCurve::ConstantPower1_Private::UVal2Mag_CurveNodes;
    // By their bits: 1.5 and 1.0, 0.001 and 0.01 in single precision.
    const float limit = std::bit_cast<float>(mixer ? 0x3FC00000U : 0x3F800000U);
    const float spacing = std::bit_cast<float>(mixer ? 0x3A83126FU : 0x3C23D70AU);
    int node = 0;
    if (u > limit) {
        u = limit;
        node = mixer ? 1499 : 100;
    } else if (u < 0.0F) {
        u = 0.0F;
    } else {
        node = static_cast<int>(u / spacing);
    }
    return (u - nodes[node].uValue) * nodes[node].slope + nodes[node].magnitude;
}

const std::vector<Kind>& middleLayers(unsigned int digit) {
    using enum Kind;
    static const std::vector<Kind> layers[12] = {{pass},
                                                 {fixed},
                                                 {mixerStyleRamp},
                                                 {constantPowerRamp},
                                                 {mixerStyleRamp, fixed},
                                                 {constantPowerRamp, fixed},
                                                 {rampHold},
                                                 {holdRamp},
                                                 {rampHoldRamp},
                                                 {rampHold, fixed},
                                                 {holdRamp, fixed},
                                                 {rampHoldRamp, fixed}};
    return layers[digit];
}

float Layer::apply(float x) const {
    switch (kind) {
    case Kind::mixerStyleRamp:
    case Kind::constantPowerRamp:
    case Kind::rampHold:
    case Kind::holdRamp:
    case Kind::rampHoldRamp:
        return gainOf(ramping != 0 ? firstCurve : lastCurve, uValue) * x;
    case Kind::fixed:
        return x * gain;
    default:
        return x;
    }
}

void Layer::advance() {
    if (ramping != 0) {
        uValue += step;
        --ramping;
    } else if (holding != 0) {
        --holding;
    } else if (kind != Kind::rampHold) {
        uValue += lastStep;
    }
}

Layer fixedLayer(float uValue) {
    return {.kind = Kind::fixed, .gain = gainOf(Curve::mixerStyle, uValue)};
}

Layer envelopeLayer(Kind kind, const Envelope& envelope, Host& host) {
    Layer shape{.kind = kind, .uValue = envelope.number(Envelope::startUValue)};
    switch (kind) {
    case Kind::rampHold:
        requireType(EnvelopeType::rampHold, lineOfNoRampHold, envelope, host);
        shape.firstCurve = shape.lastCurve = requiredCurve(Envelope::curve, envelope, host);
        shape.step = envelope.number(Envelope::step);
        shape.ramping = envelope.whole(Envelope::length);
        break;
    case Kind::holdRamp:
        requireType(EnvelopeType::holdRamp, lineOfNoHoldRamp, envelope, host);
        shape.lastCurve = requiredCurve(Envelope::curve, envelope, host);
        shape.lastStep = envelope.number(Envelope::step);
        shape.holding = envelope.whole(Envelope::length);
        break;
    case Kind::rampHoldRamp:
        requireType(EnvelopeType::rampHoldRamp, lineOfNoRampHoldRamp, envelope, host);
        shape.firstCurve = requiredCurve(Envelope::firstCurve, envelope, host);
        shape.lastCurve = requiredCurve(Envelope::lastCurve, envelope, host);
        shape.step = envelope.number(Envelope::firstStep);
        shape.lastStep = envelope.number(Envelope::lastStep);
        shape.ramping = envelope.whole(Envelope::firstLength);
        shape.holding = envelope.whole(Envelope::holdLength);
        break;
    default:
        return endlessRamp(kind, envelope);
    }
    return passed(shape, envelope.whole(Envelope::elapsed));
}

} // namespace audlmd::model
