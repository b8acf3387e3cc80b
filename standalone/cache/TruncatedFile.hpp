#pragma once

#include <sndfile.h>

namespace audlmd {

/// Whether an open file was longer when its header was written. A length that the header leaves open, as that
/// of a file written into a pipe, says nothing. Not all formats tell.
bool isShorterThanItsHeaderSays(SNDFILE* file);

} // namespace audlmd
