#pragma once

#include "loop_modes/IteratorCreationParams.hpp"

#include <cstddef>
#include <cstdint>

namespace Test {

/// Calls the function that the despatch table of the output type holds for the code, and moves `position` as
/// the function moves its output, also when it throws. Throws std::out_of_range if there is no function.
void renderThroughTable(std::size_t outputType, unsigned int code,
                        Aud::Render::IteratorCreationParams& params, std::uint8_t*& position,
                        unsigned int count);

} // namespace Test
