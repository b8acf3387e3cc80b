#pragma once

#include "host/cache/SoundFile.hpp"

#include <cstdint>
#include <functional>
#include <span>

namespace audlmd::command {

/// The same frames of each channel.
using ChannelBlock = std::span<const std::span<const float>>;

/// Reads a file once from its start to its end, in blocks of all channels. `take` gets each block with its
/// first frame. Throws SoundFileError.
void readThrough(SoundFile& file, const std::function<void(std::int64_t from, ChannelBlock block)>& take);

/// What the channels of a file are: as it says, or else as is usual.
ChannelLayout layoutOfFile(const SoundFile& file);

/// The least level at which a sample of libsndfile's format stands at full scale: the largest integer of the
/// format, or 1.0. Whether the integers reach one step further down is left to the programs that clip.
float fullScaleOf(int type);

} // namespace audlmd::command
