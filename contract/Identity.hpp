#pragma once

#include <array>
#include <cstdint>

namespace Orv {

/// A universally unique identity of a piece of media, in network byte order (RFC 4122).
struct UUID {
    std::array<std::uint8_t, 16> bytes{};

    friend bool operator==(const UUID&, const UUID&) = default;
};

} // namespace Orv

/// Names one material in the sample cache: a channel of a recording. The renderer hands the name from the
/// strip's handle to the cache and knows only its layout, which is part of the source iterators'.
struct Cookie {
    Orv::UUID material;
    std::uint16_t channel = 0;
    std::uint8_t kind = 0;

    friend bool operator==(const Cookie&, const Cookie&) = default;
};

/// The host's handle to an edited clip. What it holds is the host's; its size is compiled into the renderer.
/// \snippet services.cpp identity
class ce_handle {
public:
    ce_handle() = default;
    explicit ce_handle(const Cookie& stripCookie) : stripCookie_(stripCookie) {}

    /// The material, in the sample cache, of the strip that this handle stands for.
    Cookie get_strip_cookie() const;

private:
    Cookie stripCookie_;
};
