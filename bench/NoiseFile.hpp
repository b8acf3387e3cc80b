#pragma once

#include <cstdint>
#include <filesystem>

namespace audlmd::bench {

/// Writes a sound file of floats with two channels of noise at 48 kHz, the same for the same seed. Throws
/// std::runtime_error.
void writeNoise(const std::filesystem::path& path, unsigned int seed, std::int64_t frames);

} // namespace audlmd::bench
