#pragma once

#include "host/timeline/OtioItem.hpp"

namespace audlmd::timeline {

/// Reads an item's time warps, and what exporters and we ourselves write about levels, fades and the
/// equaliser into its effects and its metadata. `frameRate` is that of the item. Effects that are not played
/// become notes. Throws TimelineError for a change of speed over time, and for a block "audlmd" with
/// mistakes. Several time warps multiply, gains add up; of several fades or automations the last one counts.
void readSound(const Json& value, const Rational& frameRate, const Where& where, const OtioContext& context,
               OtioItem& item);

/// Reads the parameters that exporters keep in the metadata of an effect, under any namespace: a list
/// "Parameters" of objects with a "Parameter ID", a "Parameter Value" and "Key Frames".
///
///     volume    decibels, and key frames: {"12": {"Value": -6.0}}, in frames from the start of the item
///     faderIn   frames
///     faderOut  frames
///
/// Other parameters become notes, unless they have no value or their "Default Parameter Value". Other
/// programs write a "DisplayName", and the value in a "StartValue" and a list "Keyframes". Effects and
/// namespaces count for nothing that are not "Enabled", and those that a parameter of theirs switches off:
/// a "Bypass" that is true, or one to "enable" that is false.
void readExportedParameters(const Json& effect, const Rational& frameRate, const Where& where,
                            OtioItem& item);

/// Reads the block "audlmd" in an item's metadata, if there is one. What the block names replaces what
/// effects say, except for gains, which add up. Trap: a key that is not known is an error here, unlike in
/// blocks of others.
void readOwnBlock(const Json& item, const Where& where, const OtioContext& context, ItemSound& sound);

/// The word "curve" in the metadata, under any namespace: linear, log or power. `otherwise` where there is
/// none. Letters of either case count; a word that names no curve gives `otherwise`, too.
FadeCurve curveIn(const Json& item, FadeCurve otherwise);

} // namespace audlmd::timeline
