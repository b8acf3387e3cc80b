#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace audlmd {

/// A call of another program.
struct ProgramCall {
    /// The path of the program, and its arguments as they are: no shell reads them.
    std::vector<std::string> words;
    /// Takes what the program prints on its standard output, piece by piece. What it throws ends the program.
    std::function<void(std::span<const std::byte>)> take;
    /// A program that prints nothing on its standard output for so long is ended.
    std::chrono::milliseconds patience{60'000};
};

/// How a program has ended.
struct ProgramEnd {
    /// The exit status; 128 and the number of the signal that ended it, as a shell has it.
    int status = 0;
    /// Whether the program ran out of patience.
    bool isHung = false;
    /// The end of what it printed on standard error.
    std::string errors;
};

/// Where the first program of this name stands in the folders of PATH.
std::optional<std::string> findProgram(const std::string& name);

/// Runs a program to its end, with an empty standard input and in a process group of its own, so that a key
/// like Ctrl-C reaches the calling program alone. The program is killed where this function throws, and also
/// where the calling thread or process ends. Throws std::system_error where no process can be made.
ProgramEnd runProgram(const ProgramCall& call);

} // namespace audlmd
