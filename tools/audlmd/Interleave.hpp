#pragma once

#include <cstddef>
#include <span>

namespace audlmd::command {

/// Puts the samples of the channels, one container of `bytes` bytes each (1 to 4), side by side.
/// `interleaved` has room for `frames` containers of every channel.
void interleave(std::span<const std::byte* const> channels, std::size_t bytes, std::size_t frames,
                std::byte* interleaved);

/// The way back.
void deinterleave(const std::byte* interleaved, std::size_t bytes, std::size_t frames,
                  std::span<std::byte* const> channels);

} // namespace audlmd::command
