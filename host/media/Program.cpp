#include "host/media/Program.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <string_view>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace audlmd {
namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void failToRun(const std::string& program) {
    throw std::system_error(errno, std::generic_category(), "'" + program + "' cannot be started");
}

/// A descriptor that is closed with its owner.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : number_(number) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return number_; }
    void take(int number) { number_ = number; }
    void close() {
        if (number_ >= 0)
            ::close(std::exchange(number_, -1));
    }

private:
    int number_;
};

struct Pipe {
    explicit Pipe(const std::string& program) {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0)
            failToRun(program);
        reading.take(ends[0]);
        writing.take(ends[1]);
    }

    Descriptor reading;
    Descriptor writing;
};

/// In the new process, where only calls are allowed that a signal handler may make.
[[noreturn]] void becomeProgram(char* const* words, pid_t parent, int nothing, int output, int errors) {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    struct sigaction usual {};
    usual.sa_handler = SIG_DFL;
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE})
        sigaction(number, &usual, nullptr);
    // Out of the way first: where a standard stream was closed, one of them has its number.
    constexpr int firstFree = STDERR_FILENO + 1;
    const std::array streams{fcntl(nothing, F_DUPFD, firstFree), fcntl(output, F_DUPFD, firstFree),
                             fcntl(errors, F_DUPFD, firstFree)};
    bool isReady = getppid() == parent;
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
        isReady = dup2(streams[static_cast<std::size_t>(stream)], stream) >= 0 && isReady;
    // What libraries have opened is not the program's.
    close_range(firstFree, ~0U, 0);
    if (isReady)
        execv(words[0], words);
    _exit(127);
}

class Process {
public:
    Process(std::vector<std::string> words, int output, int errors) {
        std::vector<char*> arguments;
        for (std::string& word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        const Descriptor nothing(open("/dev/null", O_RDONLY | O_CLOEXEC));
        const pid_t parent = getpid();
        number_ = nothing.number() < 0 ? -1 : fork();
        if (number_ == 0)
            becomeProgram(arguments.data(), parent, nothing.number(), output, errors);
        if (number_ < 0)
            failToRun(words.front());
        // Here too, so that kill() finds the group whichever process comes first.
        setpgid(number_, number_);
    }
    ~Process() {
        if (number_ > 0)
            kill();
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// Nothing while the process runs.
    std::optional<int> status() {
        int status = 0;
        const pid_t ended = waitpid(number_, &status, WNOHANG);
        if (ended == 0 || (ended < 0 && errno == EINTR))
            return std::nullopt;
        number_ = -1;
        // Where the calling program ignores its children, nobody knows how one has ended.
        if (ended < 0)
            return 128;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    /// With all that it has started.
    void kill() {
        ::kill(-number_, SIGKILL);
        while (waitpid(number_, nullptr, 0) < 0 && errno == EINTR) {
        }
        number_ = -1;
    }

private:
    pid_t number_ = -1;
};

/// What there is to read; empty at the end.
std::span<std::byte> readSome(Descriptor& from, std::span<std::byte> into) {
    ssize_t count = -1;
    do
        count = read(from.number(), into.data(), into.size());
    while (count < 0 && errno == EINTR);
    if (count <= 0)
        from.close();
    return into.first(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
}

void keepEnd(std::string& text, std::span<const std::byte> more) {
    constexpr std::size_t most = 4096;
    text.append(reinterpret_cast<const char*>(more.data()), more.size());
    text.erase(0, text.size() - std::min(text.size(), most));
}

} // namespace

std::optional<std::string> findProgram(const std::string& name) {
    const char* const path = std::getenv("PATH");
    std::string_view folders = path != nullptr ? path : "/usr/local/bin:/usr/bin:/bin";
    while (!folders.empty()) {
        const std::string_view folder = folders.substr(0, folders.find(':'));
        folders.remove_prefix(std::min(folder.size() + 1, folders.size()));
        const std::filesystem::path program = std::filesystem::path(folder) / name;
        std::error_code none;
        if (!folder.empty() && std::filesystem::is_regular_file(program, none) &&
            access(program.c_str(), X_OK) == 0)
            return program.string();
    }
    return std::nullopt;
}

ProgramEnd runProgram(const ProgramCall& call) {
    Pipe output(call.words.front());
    Pipe errors(call.words.front());
    // Larger pieces, where the system allows them.
    fcntl(output.writing.number(), F_SETPIPE_SZ, 1 << 20);
    Process process(call.words, output.writing.number(), errors.writing.number());
    output.writing.close();
    errors.writing.close();
    ProgramEnd end;
    std::vector<std::byte> bytes(std::size_t{1} << 20);
    Clock::time_point deadline = Clock::now() + call.patience;
    while (Clock::now() < deadline) {
        const bool isSilent = output.reading.number() < 0 && errors.reading.number() < 0;
        if (const std::optional<int> status = isSilent ? process.status() : std::nullopt) {
            end.status = *status;
            return end;
        }
        // A descriptor below 0 is passed over.
        std::array<pollfd, 2> ready{pollfd{output.reading.number(), POLLIN, 0},
                                    pollfd{errors.reading.number(), POLLIN, 0}};
        constexpr int shortWhile = 10;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        poll(ready.data(), ready.size(), isSilent ? shortWhile : static_cast<int>(std::max<long>(left, 0)));
        if (ready[0].revents != 0)
            if (const std::span<const std::byte> printed = readSome(output.reading, bytes);
                !printed.empty()) {
                call.take(printed);
                deadline = Clock::now() + call.patience;
            }
        if (ready[1].revents != 0)
            keepEnd(end.errors, readSome(errors.reading, bytes));
    }
    end.isHung = true;
    return end;
}

} // namespace audlmd
