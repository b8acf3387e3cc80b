#pragma once

#include <cstddef>
#include <cstdint>

namespace audlmd {

/// How many libraries' units currently announce the picture format with this number.
std::size_t announcementsOfImageFormat(std::uint32_t number);

/// How many different picture formats are announced at present.
std::size_t announcedImageFormats();

} // namespace audlmd
