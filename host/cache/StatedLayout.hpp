#pragma once

#include "host/cache/ChannelLayout.hpp"

#include <sndfile.h>

namespace audlmd {

/// What an open file says of its channels: by a channel mask or map, as in WAV, RF64, CAF and AIFF files, or
/// by its format, as in FLAC, Vorbis and Opus. Unknown where the file says nothing, or something impossible.
ChannelLayout statedLayout(SNDFILE* file, const SF_INFO& info);

} // namespace audlmd
