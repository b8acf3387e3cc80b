#pragma once

#include "contract/DespatchTables.hpp"

#include <cstddef>
#include <span>

namespace audlmd {

/// An output position for samples as the chain delivers them: floats, neither clipped nor encoded. Use this
/// for what is processed further, and convertBlock() for what leaves the program.
///
/// No despatch table knows this type: a program has render functions for unclipped samples if it is linked to
/// audlmd::inlined. The buffer is the caller's.
struct Unclipped {
    float* position;
};

/// Writes one sample and moves the position past the sample. Render functions find this by the type.
/// \snippet signal.cpp deliver
[[gnu::always_inline]] inline void deliver(float x, Unclipped& out) {
    *out.position = x;
    ++out.position;
}

/// A render function that delivers unclipped samples.
using UnclippedRenderFunction = Aud::Render::LoopModesDespatch::Types<Unclipped>::ProcessSamples;

/// Delivers `count` unclipped samples through one of Aud::Render::OutputTypes, many at a time, and moves
/// `out` on by as many. The bytes are those that Aud::Render::deliver() writes one by one, for every float:
/// clipped, scaled and truncated, or added to what is there.
///
/// Use this once, on what leaves the program: the output of an inlined render function, or a mix. Blocks of
/// any size give the same bytes. `in` and the buffer behind `out` may be the same for 32-bit floats that are
/// not summed; no other overlap is allowed.
/// \snippet signal.cpp unclipped
template <class Out>
void convertBlock(const float* in, std::size_t count, Out& out);

/// Adds what the containers hold to the samples, as a summing output type does before it clips and stores:
/// adding and then converting to the plain type gives the bytes of converting to the summing one. Use this to
/// look at the sums. For the formats of Aud::Render::OutputTypes.
/// \snippet signal.cpp unclipped
template <class Format>
void addStored(const Format* containers, std::span<float> samples);

} // namespace audlmd
