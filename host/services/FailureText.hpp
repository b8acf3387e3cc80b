#pragma once

#include <string>

namespace audlmd {

/// The text of the exception that is being handled; `otherwise` where it is no std::exception. Call this in a
/// handler on a thread that must not end by an exception: without memory for the text it is "out of memory".
std::string failureText(const char* otherwise) noexcept;

} // namespace audlmd
