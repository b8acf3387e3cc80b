#pragma once

#include <cstddef>
#include <cstdint>

namespace audlmd {

// Every library announces the families of picture formats, by number, for as long as the library is loaded
// (Orv::Image::FormatUID). The host counts the announcements; these functions may be called on any thread.

/// How many announcements of the picture format with this number are in force. The trap: a library may
/// announce a format several times, once in each of its units. 0 for a format that nobody announces.
std::size_t announcementsOfImageFormat(std::uint32_t number);

/// How many different picture formats the loaded libraries announce. Use this to see whether a library has
/// been unloaded cleanly: the count falls back.
std::size_t announcedImageFormats();

} // namespace audlmd
