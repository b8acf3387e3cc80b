#pragma once

#include "host/mix/Relabel.hpp"
#include "host/signal/Equaliser.hpp"
#include "host/signal/Fade.hpp"
#include "host/signal/StripPlayer.hpp"
#include "tools/audlmd/options/Time.hpp"

#include <string>
#include <string_view>

namespace audlmd::command {

// Turn the text of an option into its value. All throw CommandError, naming `option`, for a text that they
// cannot read. Where a value's range depends on the input, whoever knows the input checks the range.

/// Decibels as the u-value of the mixer-style curve, see words::levelIn().
float parseLevel(std::string_view text, std::string_view option);

/// Decibels from minus infinity, which is silence, up to mostGainDecibels.
double parseGain(std::string_view text, std::string_view option);

/// How long a fade is, as heard, and how its gain runs.
struct FadeValue {
    TimeValue length;
    FadeCurve curve = FadeCurve::linear;
};

/// `TIME` or `TIME:curve`, the curve one of linear, log and power. Without a curve the fade is linear.
FadeValue parseFade(std::string_view text, std::string_view option);

/// `kind:frequency[:gain][:q]`, see words::bandIn().
EqualiserBand parseBand(std::string_view text, std::string_view option);

/// A speed within the limits of a strip, and the text for messages.
struct SpeedValue {
    /// In source samples per output sample.
    double factor = 1.0;
    std::string text;
};

/// Throws std::invalid_argument too, for a number beyond slowestSpeed or fastestSpeed.
SpeedValue parseSpeed(std::string_view text, std::string_view option);

/// A sample rate in hertz within the limits of the host, such as 48000, 44.1k or 96 kHz.
int parseRate(std::string_view text, std::string_view option);

/// "24000/1001:24", see words::relabelIn().
Relabel parseRelabel(std::string_view text, std::string_view option);

/// "best", "filtering" or "linear". "none" is not a word here: a strip without a speed has no converter.
Converter parseConverter(std::string_view text, std::string_view option);

} // namespace audlmd::command
