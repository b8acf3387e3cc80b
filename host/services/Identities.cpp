#include "host/services/Identities.hpp"

#include <cstddef>
#include <cstdint>
#include <random>
#include <string_view>

/// The library asks the strip in a record for its material by this function, once for each render call.
Cookie ce_handle::get_strip_cookie() const {
    return stripCookie_;
}

namespace audlmd {
namespace {

/// 32 digits and 4 hyphens.
constexpr std::size_t textLength = 36;

/// Where the two digits of a byte stand in the text. Hyphens stand before bytes 4, 6, 8 and 10. Each
/// comparison that holds adds one hyphen to what stands before.
constexpr std::size_t textPosition(std::size_t byte) {
    return 2 * byte + (byte >= 4) + (byte >= 6) + (byte >= 8) + (byte >= 10);
}

} // namespace

Orv::UUID makeUuid() {
    std::random_device device;
    Orv::UUID uuid;
    for (std::size_t byte = 0; byte < uuid.bytes.size(); byte += 4) {
        // One call of the device gives 32 bits, which are 4 of the 16 bytes.
        const std::uint32_t random = device();
        for (std::size_t i = 0; i < 4; ++i)
            uuid.bytes[byte + i] = static_cast<std::uint8_t>(random >> (8 * i));
    }
    // The version, 4, and the variant of RFC 4122, sections 4.1.3 and 4.1.1.
    uuid.bytes[6] = static_cast<std::uint8_t>(0x40 | (uuid.bytes[6] & 0x0F));
    uuid.bytes[8] = static_cast<std::uint8_t>(0x80 | (uuid.bytes[8] & 0x3F));
    return uuid;
}

std::string toString(const Orv::UUID& uuid) {
    constexpr std::string_view digits = "0123456789abcdef";
    // The digits overwrite all but the four hyphens.
    std::string text(textLength, '-');
    for (std::size_t byte = 0; byte < uuid.bytes.size(); ++byte) {
        text[textPosition(byte)] = digits[uuid.bytes[byte] >> 4];
        text[textPosition(byte) + 1] = digits[uuid.bytes[byte] & 0x0F];
    }
    return text;
}

std::string toString(const Cookie& cookie) {
    return toString(cookie.material) + ", channel " + std::to_string(cookie.channel) + ", kind " +
           std::to_string(cookie.kind);
}

} // namespace audlmd
