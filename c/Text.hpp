#pragma once

#include <algorithm>
#include <string>

namespace audlmd::c {

/// A text for a caller who frees it by audlmd_free_text().
inline char* copied(const std::string& text) {
    char* const copy = new char[text.size() + 1];
    *std::ranges::copy(text, copy).out = '\0';
    return copy;
}

} // namespace audlmd::c
