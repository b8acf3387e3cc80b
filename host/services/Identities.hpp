#pragma once

#include "contract/Identity.hpp"

#include <string>

namespace audlmd {

/// A new identity for a recording: random, version 4 of RFC 4122. Throws std::runtime_error if the
/// system gives no random numbers. Use one identity for all its channels. 122 bits are random, so
/// that no two processes need to agree.
/// \snippet services.cpp identity
Orv::UUID makeUuid();

/// Writes an identity in the form of RFC 4122: "f81d4fae-7dec-11d0-a765-00a0c91e6bf6".
std::string toString(const Orv::UUID& uuid);

/// Describes a material in messages: the identity of the recording, then the channel and the kind. Made for
/// people.
std::string toString(const Cookie& cookie);

} // namespace audlmd
