#pragma once

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>

namespace audlmd::command {

/// How the command ended, for scripts. A signal ends the process itself, so that a shell sees 128 + N.
enum class ExitStatus {
    done = 0,
    /// What is none of the others: no memory, no thread.
    failed = 1,
    /// The command line cannot be understood, or asks for what cannot be.
    usage = 2,
    /// An input is not there, not readable, damaged, or of the wrong kind.
    input = 3,
    /// The output is written, and something that should sound in it is silent.
    incomplete = 4,
    /// The output, or the sound device, cannot be written.
    output = 5,
};

/// The command cannot do what was asked. The text is one line for the user: what was wrong, and what to do
/// about it. The program's name is put in front when the line is printed.
class CommandError : public std::runtime_error {
public:
    explicit CommandError(const std::string& line, ExitStatus status = ExitStatus::usage)
        : std::runtime_error(line), status_(status) {}

    ExitStatus status() const { return status_; }

private:
    ExitStatus status_;
};

/// The exception that is being handled, as an error of the command. Call this in a handler, and not for
/// std::bad_alloc: this takes memory.
CommandError currentFailure();

/// Prints one line of error. Paths and texts of files in the line give no orders to a terminal.
void printError(std::string line);

/// Calls `take` with the number of each of `count` inputs, also after one that has failed. The failure of an
/// only input is passed on. Those of several are printed, and a CommandError counts them, with the status of
/// the first; `others` says where to find what did not fail.
void forEachInput(std::size_t count, const std::function<void(std::size_t)>& take,
                  const std::string& others = {});

} // namespace audlmd::command
