#pragma once

#include <string>
#include <vector>

namespace audlmd::command {

/// What of the user's settings does not take effect as it is written, in lines for the user: keys that nobody
/// asks for, and numbers that are limited. Call this once the library is loaded, which has asked by then.
std::vector<std::string> settingNotes();

} // namespace audlmd::command
