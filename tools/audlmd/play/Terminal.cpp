#include "tools/audlmd/play/Terminal.hpp"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace audlmd::command {
namespace {

constexpr std::array restoringSignals{SIGHUP,  SIGINT,  SIGQUIT, SIGTERM, SIGPIPE,
                                      SIGABRT, SIGSEGV, SIGBUS,  SIGFPE};

/// As the terminal was before its keys were taken, for the signal handler too.
termios before{};

/// Whether the terminal is as takeKeys() leaves it. A shell that takes the terminal back, as from a job that
/// was stopped, has modes of its own.
bool givesKeys(const termios& modes) {
    return (modes.c_lflag & static_cast<tcflag_t>(ICANON | ECHO)) == 0 && modes.c_cc[VMIN] == 0 &&
           modes.c_cc[VSUSP] == _POSIX_VDISABLE;
}

void takeKeys() {
    termios keys{};
    if (tcgetattr(STDIN_FILENO, &keys) != 0 || givesKeys(keys))
        return;
    before = keys;
    keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    keys.c_cc[VMIN] = 0;
    keys.c_cc[VTIME] = 0;
    // A command that is suspended would leave the terminal as it is now.
    keys.c_cc[VSUSP] = _POSIX_VDISABLE;
    tcsetattr(STDIN_FILENO, TCSANOW, &keys);
}

/// Uses only what is safe in a signal handler.
void restore() {
    termios now{};
    if (tcgetattr(STDIN_FILENO, &now) == 0 && givesKeys(now))
        tcsetattr(STDIN_FILENO, TCSANOW, &before);
}

/// Uses only what is safe in a signal handler. The second signal has the default action, so the shell sees
/// how the process ended.
extern "C" void restoreAndEnd(int signal) {
    restore();
    static_cast<void>(!write(STDOUT_FILENO, "\n", 1));
    std::signal(signal, SIG_DFL);
    std::raise(signal); // delivered when this handler returns
}

void handleSignals(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    for (const int signal : restoringSignals) {
        struct sigaction old {};
        sigaction(signal, nullptr, &old);
        // A signal that is ignored from the start, as under nohup, stays ignored.
        if (old.sa_handler != SIG_IGN)
            sigaction(signal, &action, nullptr);
    }
}

} // namespace

bool KeyTerminal::isThere() {
    return isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
}

KeyTerminal::KeyTerminal() {
    handleSignals(&restoreAndEnd);
    // These two would stop the command where another process has the terminal: when it reads a key, and when
    // it restores the terminal or writes its last line.
    std::signal(SIGTTIN, SIG_IGN);
    std::signal(SIGTTOU, SIG_IGN);
}

KeyTerminal::~KeyTerminal() {
    restore();
    handleSignals(SIG_DFL);
    std::fputs("\n", stdout);
    std::fflush(stdout);
}

/// Where there is no job control, the terminal names no group, and everybody may read.
bool KeyTerminal::hasKeys() const {
    const pid_t foreground = tcgetpgrp(STDIN_FILENO);
    if (foreground != -1 && foreground != getpgrp())
        return false;
    takeKeys();
    return true;
}

std::string KeyTerminal::read(std::chrono::milliseconds time, bool& hasEnded) const {
    pollfd keyboard{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
    if (poll(&keyboard, 1, static_cast<int>(time.count())) <= 0)
        return "";
    std::array<char, 64> typed{};
    const ssize_t count = ::read(STDIN_FILENO, typed.data(), typed.size());
    hasEnded = count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN);
    return {typed.data(), count > 0 ? static_cast<std::size_t>(count) : 0};
}

void KeyTerminal::show(const std::string& line) const {
    winsize size{};
    const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    // Carriage return, the line, then erase to the end of the line.
    std::printf("\r%s\033[K", line.substr(0, known ? size.ws_col - 1U : 79U).c_str());
    std::fflush(stdout);
}

} // namespace audlmd::command
