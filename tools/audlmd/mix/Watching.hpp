#pragma once

#include "tools/audlmd/mix/MixOptions.hpp"

#include <filesystem>
#include <functional>

namespace audlmd::command {

/// Mixes, and mixes again whenever an input, or what `mix` has looked at, changes. A round that fails tells
/// its error, and waiting goes on. Returns when Ctrl-C ends the waiting; throws CommandError, with the status
/// of the last round, where that has failed, and for inputs and outputs that are no files.
void watchAndMix(
    const MixOptions& options,
    const std::function<void(const std::function<void(const std::filesystem::path&)>& looksAt)>& mix);

} // namespace audlmd::command
