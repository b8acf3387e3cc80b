#include "tools/audlmd/play/Terminal.hpp"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <poll.h>
#include <string_view>
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
    return (modes.c_lflag & static_cast<tcflag_t>(ICANON | ECHO)) == 0 && modes.c_cc[VMIN] == 0;
}

void takeKeys() {
    termios keys{};
    if (tcgetattr(STDIN_FILENO, &keys) != 0 || givesKeys(keys))
        return;
    before = keys;
    keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    keys.c_cc[VMIN] = 0;
    keys.c_cc[VTIME] = 0;
    tcsetattr(STDIN_FILENO, TCSANOW, &keys);
}

/// Whether the process may use the terminal. Where there is no job control, the terminal names no group, and
/// everybody may.
bool isInForeground() {
    const pid_t foreground = tcgetpgrp(STDIN_FILENO);
    return foreground == -1 || foreground == getpgrp();
}

/// Uses only what is safe in a signal handler. Behind the foreground the terminal is somebody else's.
void restoreTerminal() {
    termios now{};
    if (isInForeground() && tcgetattr(STDIN_FILENO, &now) == 0 && givesKeys(now))
        tcsetattr(STDIN_FILENO, TCSANOW, &before);
}

/// Uses only what is safe in a signal handler. The second signal has the default action, so the shell sees
/// how the process ended.
extern "C" void restoreAndEnd(int signal) {
    restoreTerminal();
    static_cast<void>(!write(STDOUT_FILENO, "\n", 1));
    std::signal(signal, SIG_DFL);
    std::raise(signal); // delivered when this handler returns
}

volatile std::sig_atomic_t stopIsAsked = 0;

extern "C" void askToStop(int /*signal*/) {
    stopIsAsked = 1;
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
}

KeyTerminal::~KeyTerminal() {
    restore();
    handleSignals(SIG_DFL);
}

void KeyTerminal::restore() {
    restoreTerminal();
    endLine();
}

bool KeyTerminal::hasKeys() const {
    if (!isInForeground())
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

std::size_t KeyTerminal::width() const {
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1 ? size.ws_col - 1U : 79U;
}

bool KeyTerminal::hasColours() const {
    const char* const none = std::getenv("NO_COLOR");
    const char* const kind = std::getenv("TERM");
    return (none == nullptr || *none == '\0') && (kind == nullptr || std::string_view(kind) != "dumb");
}

void KeyTerminal::show(const std::string& line) {
    // Carriage return, the line without going on in the next one, then erase to the end of the line.
    std::printf("\r\033[?7l%s\033[K\033[?7h", line.c_str());
    std::fflush(stdout);
    hasLine_ = true;
}

void KeyTerminal::tell(const std::string& text) {
    std::printf("%s%s\n", hasLine_ ? "\r\033[K" : "", text.c_str());
    hasLine_ = false;
}

void KeyTerminal::endLine() {
    if (hasLine_)
        std::putchar('\n');
    hasLine_ = false;
    std::fflush(stdout);
}

JobControl::JobControl() {
    // These two would stop the command where another process has the terminal: when it reads a key, and when
    // it restores the terminal or writes a line.
    std::signal(SIGTTIN, SIG_IGN);
    std::signal(SIGTTOU, SIG_IGN);
    takeStops();
}

JobControl::~JobControl() {
    if (takesStops_)
        std::signal(SIGTSTP, SIG_DFL);
}

bool JobControl::isAskedToStop() const {
    return stopIsAsked != 0;
}

void JobControl::stop() {
    stopIsAsked = 0;
    std::signal(SIGTSTP, SIG_DFL);
    std::raise(SIGTSTP); // returns when somebody lets the process go on
    takeStops();
}

void JobControl::takeStops() {
    struct sigaction action {};
    action.sa_handler = &askToStop;
    struct sigaction old {};
    sigaction(SIGTSTP, nullptr, &old);
    takesStops_ = old.sa_handler != SIG_IGN && sigaction(SIGTSTP, &action, nullptr) == 0;
}

} // namespace audlmd::command
