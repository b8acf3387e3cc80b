#pragma once

#include "standalone/cache/SoundFile.hpp"
#include "standalone/signal/StripPlayer.hpp"
#include "tools/audlmd/RenderOptions.hpp"

namespace audlmd::command {

/// What the options ask of the player of each channel, which then only lacks its cookie. Times of the range
/// are the input's; those of fades and automation are as heard, whatever the speed. Throws CommandError.
StripSettings readSettings(const RenderOptions& options, const SoundFile& input);

} // namespace audlmd::command
