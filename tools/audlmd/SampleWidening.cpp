#include "tools/audlmd/SampleWidening.hpp"

#include <bit>
#include <cstdint>
#include <cstring>

namespace audlmd::command {
namespace {

/// Offset binary and two's complement differ in the highest bit.
constexpr std::uint32_t signBit = 0x80000000;

/// `bytes` of them stand at the top of an int; the machine is little-endian.
template <std::size_t Bytes>
void widenBytes(const std::byte* from, std::span<int> samples, std::uint32_t flipped) {
    for (int& sample : samples) {
        std::uint32_t bits = 0;
        std::memcpy(reinterpret_cast<std::byte*>(&bits) + sizeof bits - Bytes, from, Bytes);
        sample = std::bit_cast<int>(bits ^ flipped);
        from += Bytes;
    }
}

template <std::size_t Bytes>
void narrowToBytes(std::span<const int> samples, std::byte* to, std::uint32_t flipped) {
    for (const int sample : samples) {
        const std::uint32_t bits = std::bit_cast<std::uint32_t>(sample) ^ flipped;
        std::memcpy(to, reinterpret_cast<const std::byte*>(&bits) + sizeof bits - Bytes, Bytes);
        to += Bytes;
    }
}

} // namespace

void widen(FormatId format, const std::byte* containers, std::span<int> samples) {
    if (format == FormatId::s24)
        widenBytes<3>(containers, samples, 0);
    else
        widenBytes<1>(containers, samples, format == FormatId::u8 ? signBit : 0);
}

void narrow(FormatId format, std::span<const int> samples, std::byte* containers) {
    if (format == FormatId::s24)
        narrowToBytes<3>(samples, containers, 0);
    else
        narrowToBytes<1>(samples, containers, format == FormatId::u8 ? signBit : 0);
}

} // namespace audlmd::command
