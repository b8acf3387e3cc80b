#pragma once

#include "loop_modes/IteratorCreationParams.hpp"
#include "model/Script.hpp"

#include <cstddef>
#include <cstdint>

namespace Test {

/// What the model throws where the library throws Orv::Exception::RuntimeError.
struct ModelRuntimeError {
    const char* message;
    int line;
};

/// Renders as the library must, slowly: every stage is decided on for every sample, and every host operation
/// goes to `script` in the order of the contract. Moves `position` past every sample written.
void modelRender(unsigned int code, std::size_t outputType, const Aud::Render::IteratorCreationParams& params,
                 Script& script, std::uint8_t*& position, unsigned int count);

} // namespace Test
