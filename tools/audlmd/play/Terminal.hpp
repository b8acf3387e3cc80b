#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace audlmd::command {

/// The terminal while the command reads single keys: without echo and without waiting for the end of a line.
/// Put back as it was by the destructor, and by every signal that ends the process and can be caught. There
/// may be one object at a time, and a JobControl beside it.
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

    /// Puts the terminal back, until hasKeys() takes the keys again, and leaves the line of show().
    void restore();

    // For as long as there are keys.

    /// What was typed, as soon as there is something, else nothing after a time. Sets `hasEnded` where the
    /// terminal is gone.
    std::string read(std::chrono::milliseconds time, bool& hasEnded) const;
    /// In characters, without the one on which the cursor stands.
    std::size_t width() const;
    /// Whether NO_COLOR and TERM allow colours.
    bool hasColours() const;
    /// Writes over the line before. What is wider than the screen is cut off.
    void show(const std::string& line);
    /// Writes lines that stay, in the place of the line before.
    void tell(const std::string& text);

private:
    void endLine();

    /// Whether the last line is that of show().
    bool hasLine_ = false;
};

/// Lets a shell stop the process (Ctrl-Z) where the program itself is ready for that, and not in the middle
/// of its use of devices. There may be one object at a time. Meanwhile the process is not stopped for using
/// the terminal in the background.
class JobControl {
public:
    /// A stop that is ignored from the start stays ignored.
    JobControl();
    ~JobControl();
    JobControl(const JobControl&) = delete;
    JobControl& operator=(const JobControl&) = delete;

    bool isAskedToStop() const;
    /// Stops the process, as the shell expects. Returns when the process is to go on: at once where there is
    /// no shell that could see to that.
    void stop();

private:
    void takeStops();

    bool takesStops_ = false;
};

} // namespace audlmd::command
