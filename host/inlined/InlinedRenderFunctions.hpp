#pragma once

#include "host/signal/Unclipped.hpp"

namespace audlmd {

/// The render function of a mode that was compiled into this program together with the host operations that a
/// sample needs. Null for a code that names no mode, and for a mode that was left out of the build. Any
/// number may be asked for, at any time, on any thread.
///
/// The function renders the bytes that the function of a despatch table renders, before the output type clips
/// and encodes them. The cache of the record must be a MaterialCache. Twins have one function in common.
UnclippedRenderFunction inlinedRenderFunction(unsigned long code) noexcept;

} // namespace audlmd
