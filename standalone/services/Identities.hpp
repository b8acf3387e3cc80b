#pragma once

#include "host/Identity.hpp"

#include <string>
#include <string_view>

namespace audlmd {

/// A new identity: random, version 4 of RFC 4122.
Orv::UUID makeUuid();

/// Reads the 36 characters of RFC 4122, in letters of either case. Throws std::invalid_argument.
Orv::UUID parseUuid(std::string_view text);

/// In lower-case letters: "f81d4fae-7dec-11d0-a765-00a0c91e6bf6".
std::string toString(const Orv::UUID& uuid);

/// For messages: the identity of the material, then the channel and the kind.
std::string toString(const Cookie& cookie);

} // namespace audlmd
