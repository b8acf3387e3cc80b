#pragma once

#include <string_view>

namespace audlmd::command {

/// The page, of page.html, page.css and the scripts, up to its data and from there on.
extern const std::string_view pageBeforeData;
extern const std::string_view pageAfterData;

} // namespace audlmd::command
