#include "host/signal/BlockLoops.hpp"

#include <cstring>
#include <emmintrin.h>

namespace audlmd {
namespace {

/// Returns how many of the frames, from the first on, are done.
std::size_t splitPairs(const float* frames, std::size_t count, float* left, float* right) {
    const std::size_t whole = count / 4 * 4;
    for (std::size_t i = 0; i < whole; i += 4) {
        const __m128 first = _mm_loadu_ps(frames + 2 * i);
        const __m128 last = _mm_loadu_ps(frames + 2 * i + 4);
        _mm_storeu_ps(left + i, _mm_shuffle_ps(first, last, _MM_SHUFFLE(2, 0, 2, 0)));
        _mm_storeu_ps(right + i, _mm_shuffle_ps(first, last, _MM_SHUFFLE(3, 1, 3, 1)));
    }
    return whole;
}

/// The two halves of sixteen bytes of each channel, side by side.
struct JoinedHalves {
    __m128i low, high;
};

template <std::size_t Bytes>
JoinedHalves joined(__m128i left, __m128i right) {
    if constexpr (Bytes == 1)
        return {_mm_unpacklo_epi8(left, right), _mm_unpackhi_epi8(left, right)};
    else if constexpr (Bytes == 2)
        return {_mm_unpacklo_epi16(left, right), _mm_unpackhi_epi16(left, right)};
    else
        return {_mm_unpacklo_epi32(left, right), _mm_unpackhi_epi32(left, right)};
}

/// Sixteen bytes of each channel at a time. Returns how many containers are done.
template <std::size_t Bytes>
std::size_t joinPacks(const std::byte* left, const std::byte* right, std::size_t count, std::byte* frames) {
    constexpr std::size_t pack = 16 / Bytes;
    const std::size_t whole = count / pack * pack;
    for (std::size_t at = 0; at < whole * Bytes; at += 16) {
        const auto [low, high] = joined<Bytes>(_mm_loadu_si128(reinterpret_cast<const __m128i*>(left + at)),
                                               _mm_loadu_si128(reinterpret_cast<const __m128i*>(right + at)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(frames + 2 * at), low);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(frames + 2 * at + 16), high);
    }
    return whole;
}

/// Two containers of each channel at a time, in the registers of integers. Reads two bytes more of each,
/// which the next two have.
template <>
std::size_t joinPacks<3>(const std::byte* left, const std::byte* right, std::size_t count,
                         std::byte* frames) {
    constexpr std::uint64_t three = 0xFFFFFF;
    std::size_t done = 0;
    for (; done + 3 <= count; done += 2, left += 6, right += 6, frames += 12) {
        std::uint64_t ofLeft = 0;
        std::uint64_t ofRight = 0;
        std::memcpy(&ofLeft, left, sizeof ofLeft);
        std::memcpy(&ofRight, right, sizeof ofRight);
        const std::uint64_t first = (ofLeft & three) | (ofRight & three) << 24 | (ofLeft >> 24 & three) << 48;
        const auto last = static_cast<std::uint32_t>((ofLeft >> 40 & 0xFF) | (ofRight >> 24 & three) << 8);
        std::memcpy(frames, &first, sizeof first);
        std::memcpy(frames + 8, &last, sizeof last);
    }
    return done;
}

template <std::size_t Bytes>
void join(const std::byte* left, const std::byte* right, std::size_t count, std::byte* frames) {
    for (std::size_t i = joinPacks<Bytes>(left, right, count, frames); i < count; ++i) {
        std::memcpy(frames + 2 * i * Bytes, left + i * Bytes, Bytes);
        std::memcpy(frames + (2 * i + 1) * Bytes, right + i * Bytes, Bytes);
    }
}

} // namespace

void splitFrames(std::span<const float> frames, std::span<float* const> channels) {
    const std::size_t width = channels.size();
    const std::size_t count = frames.size() / width;
    const std::size_t done = width == 2 ? splitPairs(frames.data(), count, channels[0], channels[1]) : 0;
    for (std::size_t channel = 0; channel < width; ++channel)
        for (std::size_t i = done; i < count; ++i)
            channels[channel][i] = frames[i * width + channel];
}

void joinChannels(const std::byte* left, const std::byte* right, std::size_t bytes, std::size_t count,
                  std::byte* frames) {
    constexpr decltype(&join<1>) joins[] = {join<1>, join<2>, join<3>, join<4>};
    joins[bytes - 1](left, right, count, frames);
}

} // namespace audlmd
