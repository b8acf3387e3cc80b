#pragma once

#include <stdexcept>
#include <string>

namespace audlmd::command {

/// The command cannot do what was asked; its exit status is 1. The text is one line for the user: what was
/// wrong, and what to do about it. The program's name is put in front when the line is printed.
class CommandError : public std::runtime_error {
public:
    explicit CommandError(const std::string& line) : std::runtime_error(line) {}
};

} // namespace audlmd::command
