#pragma once

#include "contract/Identity.hpp"

#include <string>
#include <string_view>

namespace audlmd {

/// A new identity for a piece of material: random, version 4 of RFC 4122. Throws std::runtime_error if the
/// system gives no random numbers. Use one identity for all channels of a recording. 122 bits are random, so
/// that no two processes need to agree.
Orv::UUID makeUuid();

/// Reads an identity in the form of RFC 4122: 36 characters, with letters of either case and nothing around
/// them. Throws std::invalid_argument, with the text and the form that is expected. Any version and variant
/// is accepted.
Orv::UUID parseUuid(std::string_view text);

/// Writes the form that parseUuid reads, in lower-case letters: "f81d4fae-7dec-11d0-a765-00a0c91e6bf6".
std::string toString(const Orv::UUID& uuid);

/// Describes a strip in messages: the identity of the material, then the channel and the kind. Made for
/// people: no function reads this text back.
std::string toString(const Cookie& cookie);

} // namespace audlmd
