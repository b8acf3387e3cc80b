#pragma once

#include "host/cache/ChannelLayout.hpp"

#include <sndfile.h>

#include <string>

namespace audlmd::command {

// How a file says what its channels are. WAV and RF64 files have a mask, in which speakers have one order;
// CAF and AIFF files have a number for each of some orders, films' among them; the channels of a FLAC are
// always the usual ones; other files say nothing. Mono and stereo need no saying.

/// libsndfile's type for a file of type `type` with these channels: SF_FORMAT_WAVEX for a WAV that says what
/// they are.
int typeFor(int type, const ChannelLayout& layout);

/// Why a file of libsndfile's type would say something wrong of the channels, which another order mends.
/// Empty: it would not.
std::string whyLayoutDoesNotFit(int type, const ChannelLayout& layout);

/// Has a file that is open for writing say what its channels are. Returns whether it does, once it is
/// written.
bool stateLayout(SNDFILE* file, int type, const ChannelLayout& layout);

/// A line for the user where a file does not say what its channels are and readers will take them for others.
/// Else empty.
std::string layoutNote(const std::string& path, const ChannelLayout& layout, bool isStated);

} // namespace audlmd::command
