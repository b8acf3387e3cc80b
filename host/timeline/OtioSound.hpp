#pragma once

#include "host/timeline/OtioItem.hpp"

namespace audlmd::timeline {

/// Reads an item's time warps, and what exporters and we ourselves write about levels, fades and the
/// equaliser into its effects and its metadata. `frameRate` is that of the item. Effects that are not played
/// become notes. Throws TimelineError for a speed that is none, and for a block "audlmd" with mistakes.
/// Several time warps multiply, gains add up; of several fades or automations the last one counts. What the
/// block "audlmd" names replaces what effects say, except for gains. Trap: a key of that block that is not
/// known is an error, unlike in blocks of others.
void readSound(const Json& value, const Rational& frameRate, const Reading& reading, OtioItem& item);

/// The key "relabel" in the block "audlmd" of a clip. Throws TimelineError for a text that is none.
Relabel relabelOf(const Json& clip, const Reading& reading);

/// The word "curve" in the metadata, under any namespace: linear, log or power. `otherwise` where there is
/// none. Letters of either case count; a word that names no curve gives `otherwise`, too.
FadeCurve curveIn(const Json& item, FadeCurve otherwise);

} // namespace audlmd::timeline
