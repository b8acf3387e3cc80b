#pragma once

#include "host/mix/Media.hpp"

#include <cstdint>

namespace audlmd::c {

/// Reads interleaved frames in a format of audlmd_format, see audlmd_read(). Throws std::invalid_argument for
/// what is no format or lies before 0, and what the sources throw.
std::int64_t readFrames(const Media& media, std::int64_t position, std::int64_t frames, int format,
                        void* buffer);

} // namespace audlmd::c
