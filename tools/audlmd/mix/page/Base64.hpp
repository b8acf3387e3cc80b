#pragma once

#include <string>
#include <string_view>

namespace audlmd::command {

/// Any bytes as text (RFC 4648, section 4).
std::string base64(std::string_view bytes);

} // namespace audlmd::command
