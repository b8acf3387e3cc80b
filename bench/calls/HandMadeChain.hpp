#pragma once

#include "loop_modes/IteratorCreationParams.hpp"

namespace Bench {

using ChainBuilder = void (*)(const Aud::Render::IteratorCreationParams&);

/// What builds and drops, by hand, what a render call builds and drops: the host's source iterator, and one
/// copy of it for each of `layers` layers (0 to 4), each of them made from the one below, which is then
/// destroyed.
ChainBuilder handMadeChain(bool forward, unsigned int layers);

} // namespace Bench
