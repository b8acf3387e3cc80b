#pragma once

#include "host/mix/MixReport.hpp"
#include "host/mix/Timeline.hpp"

#include <cstdint>
#include <vector>

namespace audlmd::model {

/// A medium in memory: the samples of each channel, all of one length, and their rate in hertz.
struct Medium {
    std::vector<std::vector<float>> channels;
    int sampleRate = 48000;
};

/// The output of a mix, in double precision: one list of samples for each channel. 1.0 is full scale.
using Output = std::vector<std::vector<double>>;

/// Adds a strip to an output whose first sample is number `from`. Returns where the strip sounds, which may
/// lie outside of the output.
///
/// A mix, played slowly: a second account of what a timeline says, written from the description of each
/// setting and never from the mixer or the player, whose functions it does not call. Every law is the exact
/// one: straight lines for fades and automations, decibels for gains, no tables. Rates are converted by one
/// run of libsoxr, the speed of the filtering converter by one run of libresample. Tests compare a mixer with
/// the sum of all strips; how far the two may differ is said there.
///
/// Trap: bands, fades and routings are taken as they are, without the checks of a player; a strip with more
/// channels than the output needs a routing; positions must fit into 2^33 source samples.
TimelineSpan addStrip(const TimelineStrip& strip, const Medium& medium, int sampleRate, TimelineSample from,
                      Output& output);

} // namespace audlmd::model
