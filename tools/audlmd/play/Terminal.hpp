#pragma once

#include <chrono>
#include <string>

namespace audlmd::command {

/// The terminal while the command reads single keys: without echo and without waiting for the end of a line.
/// Put back as it was by the destructor, and by every signal that ends the process and can be caught. There
/// may be one object at a time; from the first one on the process is no longer stopped for using a terminal
/// in the background.
class KeyTerminal {
public:
    /// Whether both the keyboard and the screen are a terminal.
    static bool isThere();

    KeyTerminal();
    ~KeyTerminal();
    KeyTerminal(const KeyTerminal&) = delete;
    KeyTerminal& operator=(const KeyTerminal&) = delete;

    /// Whether what is typed is for this process: not while it runs in the background. Takes the keys where a
    /// shell has just brought the process to the foreground.
    bool hasKeys() const;

    // For as long as there are keys.

    /// What was typed, as soon as there is something, else nothing after a time. Sets `hasEnded` where the
    /// terminal is gone.
    std::string read(std::chrono::milliseconds time, bool& hasEnded) const;
    /// Writes over the line before, cut to the width of the screen.
    void show(const std::string& line) const;
};

} // namespace audlmd::command
