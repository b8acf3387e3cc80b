#pragma once

#include "host/DespatchTables.hpp"
#include "loop_modes/OutputTypes.hpp"
#include "ole/Orv/OrvModeMeta"

#include <stdexcept>
#include <string>

namespace audlmd {

/// A mode code that has no render function.
class NoSuchMode : public std::out_of_range {
public:
    explicit NoSuchMode(unsigned long code);

    unsigned long code() const noexcept { return code_; }

private:
    unsigned long code_;
};

/// Why a code has no render function, in one line: which of its fields is out of range, or, for a valid code,
/// that no library has registered it.
std::string whyNoSuchMode(unsigned long code);

template <class Out>
using RenderFunction = typename Aud::Render::LoopModesDespatch::Types<Out>::ProcessSamples;

/// The render function that is registered for a mode and an output type (one of Aud::Render::OutputTypes).
/// Null if there is none, whatever the code. No library may be registering at the same time.
template <class Out>
RenderFunction<Out> findRenderFunction(unsigned long code) noexcept {
    return Aud::LoopModesDespatcherInstance<Out>::get().find(code);
}

/// The same. Throws NoSuchMode if there is none.
template <class Out>
RenderFunction<Out> renderFunction(unsigned long code) {
    const RenderFunction<Out> found = findRenderFunction<Out>(code);
    if (found == nullptr)
        throw NoSuchMode(code);
    return found;
}

} // namespace audlmd
