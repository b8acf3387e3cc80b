#pragma once

#include "tools/audlmd/join/JoinOptions.hpp"

namespace audlmd::command {

/// Joins the sounds of slices as they are, bit for bit. Throws CommandError, with ExitStatus::incomplete
/// where a slice was incomplete.
void joinSlices(const JoinOptions& options);

} // namespace audlmd::command
