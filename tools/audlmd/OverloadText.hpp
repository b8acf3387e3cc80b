#pragma once

#include "host/mix/MixReport.hpp"

#include <cstddef>
#include <string>

namespace audlmd::command {

/// "37 samples, by up to 3.52 dB, first at 0:00:00.500". Leaves out a peak of 0, which nobody has measured.
std::string overloadText(const Overload& overload, int sampleRate);

/// The line of a report on what an output has clipped in one channel, counted from 0, with the end of the
/// line. Empty where there is nothing to tell. `what` is the kind of line.
std::string channelOverloadLine(const char* what, std::size_t channel, const Overload& overload,
                                int sampleRate);

} // namespace audlmd::command
