#pragma once

#include "tools/audlmd/OutputFormat.hpp"

#include <cstddef>
#include <span>

namespace audlmd::command {

/// Containers of 8 or 24 bits as libsndfile exchanges them: signed, in the high bits of an int. The other
/// formats need none of this.
void widen(FormatId format, const std::byte* containers, std::span<int> samples);

/// The way back; what does not fit into the format is cut off.
void narrow(FormatId format, std::span<const int> samples, std::byte* containers);

} // namespace audlmd::command
