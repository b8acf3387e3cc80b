#pragma once

#include "tools/audlmd/files/OutputFormat.hpp"

#include <cstddef>
#include <span>

namespace audlmd::command {

// Samples become containers of 1 to 4 bytes, each channel alone. Files hold the channels side by side, and
// libsndfile exchanges 8 and 24 bits as ints. These functions change one layout into the other.

/// Stores samples as containers, with the bytes that the library stores; what is beyond full scale is
/// clipped.
void store(FormatId format, std::span<const float> samples, std::byte* containers);

/// Adds what the containers hold to the samples, as the library does where it sums.
void addStored(FormatId format, const std::byte* containers, std::span<float> samples);

/// Puts the samples of the channels side by side. A container has `bytes` bytes; `interleaved` has room for
/// `frames` containers of every channel. Copies bytes and changes no sample. The buffers must not overlap.
void interleave(std::span<const std::byte* const> channels, std::size_t bytes, std::size_t frames,
                std::byte* interleaved);

/// The inverse: takes the channels apart. Each channel has room for `frames` containers.
void deinterleave(const std::byte* interleaved, std::size_t bytes, std::size_t frames,
                  std::span<std::byte* const> channels);

/// Turns containers of s24, s8 or u8 into signed numbers in the high bits of an int, one for each element of
/// `samples`. Use this for no other format: the bytes of the others are exchanged as they are. `containers`
/// has one container for each element. No bit is lost: narrow() gives the same bytes back.
void widen(FormatId format, const std::byte* containers, std::span<int> samples);

/// The inverse, for the same formats. Bits below those of the format are cut off, not rounded. `containers`
/// has room for one container for each sample.
void narrow(FormatId format, std::span<const int> samples, std::byte* containers);

} // namespace audlmd::command
