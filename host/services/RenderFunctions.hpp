#pragma once

#include "contract/DespatchTables.hpp"
#include "loop_modes/RegistrationOrder.hpp"
#include "ole/Orv/OrvModeMeta"

#include <stdexcept>
#include <string>

namespace audlmd {

/// A mode code that has no render function. The text is whyNoSuchMode(code). Catch this to tell a user which
/// code is wrong or which library is missing.
class NoSuchMode : public std::out_of_range {
public:
    explicit NoSuchMode(unsigned long code);

    /// The code that was asked for.
    unsigned long code() const noexcept { return code_; }

private:
    unsigned long code_;
};

/// Says in one line, for users, why a code has no render function: which of its fields is out of range, or,
/// for a valid code, that nothing that was loaded or built in renders it.
std::string whyNoSuchMode(unsigned long code);

/// A function that renders one mode into one output type: one of Aud::Render::OutputTypes, or Unclipped.
template <class Out>
using RenderFunction = typename Aud::Render::LoopModesDespatch::Types<Out>::ProcessSamples;

/// Finds the render function for a mode code. Returns null if there is none.
template <class Out>
using RenderFunctionLookUp = RenderFunction<Out> (*)(unsigned long code) noexcept;

/// The render function that a library has registered for a mode code. Null if there is none; any number may
/// be asked for. The trap: no library may be loaded at the same time, because tables have no lock. Use this
/// where a missing mode is no failure, such as in a list of modes.
template <class Out>
RenderFunction<Out> findRenderFunction(unsigned long code) noexcept {
    return Aud::LoopModesDespatcherInstance<Out>::get().find(code);
}

/// The same, but throws NoSuchMode if there is none. Use this to render: the result is never null, and may be
/// kept as long as the library is loaded.
/// \snippet services.cpp functions
template <class Out>
RenderFunction<Out> renderFunction(unsigned long code,
                                   RenderFunctionLookUp<Out> lookUp = &findRenderFunction<Out>) {
    const RenderFunction<Out> found = lookUp(code);
    if (found == nullptr)
        throw NoSuchMode(code);
    return found;
}

} // namespace audlmd
