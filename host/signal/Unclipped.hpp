#pragma once

#include "contract/DespatchTables.hpp"

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
[[gnu::always_inline]] inline void deliver(float x, Unclipped& out) {
    *out.position = x;
    ++out.position;
}

/// A render function that delivers unclipped samples.
using UnclippedRenderFunction = Aud::Render::LoopModesDespatch::Types<Unclipped>::ProcessSamples;

} // namespace audlmd
