#pragma once

#include "loop_modes/ModeCode.hpp"

#include <string>
#include <vector>

namespace audlmd::command {

/// The layers of a valid code's chain, outermost first, down to the source.
std::vector<std::string> chainLayers(unsigned long code);

/// The chain as one nested type, without its namespaces.
std::string chainType(unsigned long code);

/// The six fields of a code, one line each: bits, value and what it selects.
std::string describeFields(const Aud::Render::ModeFields& fields);

/// The code's place in the order of registration, from 0. Only for valid codes.
std::size_t registrationPlace(unsigned long code);

} // namespace audlmd::command
