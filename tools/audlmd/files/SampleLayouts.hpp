#pragma once

#include "host/deliver/Delivery.hpp"
#include "tools/audlmd/files/OutputFormat.hpp"

#include <cstddef>
#include <span>

namespace audlmd::command {

// Samples become containers of 1 to 4 bytes, each channel alone. Files hold the channels side by side, and
// libsndfile exchanges 8 and 24 bits as ints. These functions change one layout into the other.

/// Stores samples as containers, see storeBlock().
void store(FormatId format, Rounding rounding, OutputPlace place, std::span<const float> samples,
           std::byte* containers);

/// Adds samples to what the containers hold, see addBlock(). The samples become the sums.
void add(FormatId format, Rounding rounding, OutputPlace place, std::span<float> samples,
         std::byte* containers);

/// Turns containers into the samples that they stand for, one for each element of `samples`.
void load(FormatId format, const std::byte* containers, std::span<float> samples);

/// Whether store() and add() clip what is beyond full scale.
constexpr bool clips(FormatId format, Rounding rounding) {
    return format != FormatId::f32 || rounding == Rounding::truncated;
}

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
