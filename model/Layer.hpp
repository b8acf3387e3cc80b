#pragma once

#include "model/Host.hpp"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace audlmd::model {

/// The laws from u-values to gains, by the contract's numbers.
enum class Curve : std::uint32_t { linear = 1, mixerStyle = 2, constantPower = 3 };

/// The gain at a u-value. A u-value above the limit of the law reads as the limit, a negative one as 0. The
/// node is found by a true division.
float gainOf(Curve curve, float u);

/// What a layer does.
enum class Kind {
    pass,
    equaliser,
    mixerStyleRamp,
    constantPowerRamp,
    rampHold,
    holdRamp,
    rampHoldRamp,
    fixed,
    dynamic
};

/// The layers that a middle digit of the mode code names, inner to outer.
const std::vector<Kind>& middleLayers(unsigned int digit);

/// The ten words of a request's envelope, as the contract counts them. From number 4 on they mean one thing
/// where the envelope has one ramp, and another where it has two.
struct Envelope {
    enum Word : std::size_t {
        elapsed = 0,
        startUValue = 1,
        levelUValue = 2,
        type = 3,
        step = 4,
        length = 5,
        curve = 6,
        firstStep = 4,
        lastStep = 5,
        firstLength = 6,
        holdLength = 7,
        firstCurve = 8,
        lastCurve = 9
    };

    std::uint32_t whole(Word word) const { return words[word]; }
    float number(Word word) const { return std::bit_cast<float>(words[word]); }

    std::array<std::uint32_t, 10> words{};
};

/// One layer over the source, with the state of every kind: curves and steps of the first and the last ramp,
/// and the samples left in the first ramp and in the hold.
struct Layer {
    /// The sample behind the layer, for all kinds that the host does not filter or move.
    float apply(float x) const;
    /// Moves a ramp or a shape by one sample.
    void advance();

    Kind kind = Kind::pass;
    Curve firstCurve = Curve::linear, lastCurve = Curve::linear;
    float uValue = 0.0F, step = 0.0F, lastStep = 0.0F, gain = 0.0F;
    std::uint32_t ramping = 0, holding = 0;
};

/// A level that stays.
Layer fixedLayer(float uValue);
/// A ramp without an end or a stored shape, where the envelope's elapsed samples are past. The parameters of
/// a shape must have the type of the shape, and curves that there are: throws RuntimeError, and tells the
/// host, where they have not.
Layer envelopeLayer(Kind kind, const Envelope& envelope, Host& host);

} // namespace audlmd::model
