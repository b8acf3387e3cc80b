#pragma once

#include <stdexcept>
#include <string>

namespace audlmd::command {

/// Why the command cannot do what was asked: one line, without the program's name in front, that says what
/// was wrong and what to do about it.
class CommandError : public std::runtime_error {
public:
    explicit CommandError(const std::string& line) : std::runtime_error(line) {}
};

} // namespace audlmd::command
