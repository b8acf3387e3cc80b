// What the examples play.
#pragma once

#include <cmath>
#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

/// A tone of 440 Hz at half of full scale, at 48,000 samples per second.
inline std::vector<float> tone(std::size_t samples) {
    std::vector<float> made(samples);
    for (std::size_t i = 0; i < samples; ++i)
        made[i] = 0.5F * static_cast<float>(std::sin(static_cast<double>(i) * 440.0 / 48000.0 * 6.283185307179586));
    return made;
}

/// A mono WAV of 16 bits with the tone.
inline void writeTone(const std::string& path, std::uint32_t samples) {
    std::ofstream file(path, std::ios::binary);
    const auto put = [&file](std::uint32_t number, int bytes) {
        for (int i = 0; i < bytes; ++i)
            file.put(static_cast<char>(number >> 8 * i));
    };
    file << "RIFF", put(36 + 2 * samples, 4), file << "WAVEfmt ", put(16, 4), put(1, 2), put(1, 2);
    put(48000, 4), put(96000, 4), put(2, 2), put(16, 2), file << "data", put(2 * samples, 4);
    for (const float sample : tone(samples))
        put(static_cast<std::uint16_t>(static_cast<std::int16_t>(sample * 32768.0F)), 2);
}
