#pragma once

#include "standalone/signal/StripPlayer.hpp"
#include "tools/audlmd/OutputFormat.hpp"

#include <string>

namespace audlmd::command {

/// What a player is about to do: the mode code with its fields and chain, the output type, and the numbers
/// that go into the record of the first render call.
std::string explain(const StripPlayer& player, FormatId format, bool summing);

} // namespace audlmd::command
