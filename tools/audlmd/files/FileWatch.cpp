#include "tools/audlmd/files/FileWatch.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/signalfd.h>
#include <system_error>
#include <unistd.h>

namespace audlmd::command {
namespace {

namespace fs = std::filesystem;

/// Without a change for so long, whoever writes is taken to be ready; but nobody is waited for longer than
/// the second.
constexpr std::chrono::milliseconds quiet{200};
constexpr std::chrono::milliseconds longestUnrest{3000};

/// A file counts when it is closed, not with each write. What is made by linking is never closed.
constexpr unsigned events = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_CREATE | IN_ONLYDIR;

[[noreturn]] void fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), "--watch: " + what);
}

/// The file's name in its folder's own path, so that events can be compared.
fs::path placeOf(const fs::path& file) {
    const fs::path whole = fs::absolute(file).lexically_normal();
    std::error_code none;
    const fs::path folder = fs::weakly_canonical(whole.parent_path(), none);
    return (folder.empty() ? whole.parent_path() : folder) / whole.filename();
}

bool isBelow(const fs::path& path, const fs::path& folder) {
    return std::ranges::mismatch(folder, path).in1 == folder.end();
}

/// Ctrl-C, as something to wait for, while it would end the process.
class Interrupt {
public:
    Interrupt() {
        sigemptyset(&signals_);
        sigaddset(&signals_, SIGINT);
        pthread_sigmask(SIG_BLOCK, &signals_, &before_);
        descriptor_ = signalfd(-1, &signals_, SFD_CLOEXEC | SFD_NONBLOCK);
        if (descriptor_ < 0)
            fail("Ctrl-C cannot be waited for");
    }
    ~Interrupt() {
        // What has come is taken, or it would still end the process.
        signalfd_siginfo taken{};
        while (read(descriptor_, &taken, sizeof taken) > 0) {
        }
        close(descriptor_);
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    int descriptor() const { return descriptor_; }

private:
    sigset_t signals_{};
    sigset_t before_{};
    int descriptor_ = -1;
};

} // namespace

FileWatch::FileWatch() : descriptor_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    if (descriptor_ < 0)
        fail("files cannot be watched");
}

FileWatch::~FileWatch() {
    close(descriptor_);
}

void FileWatch::add(const fs::path& file) {
    const fs::path place = placeOf(file);
    if (!files_.insert(place).second)
        return;
    watchAbove(place);
    std::error_code none;
    if (fs::is_symlink(place, none))
        if (const fs::path target = fs::canonical(place, none); !target.empty())
            add(target);
}

void FileWatch::addFolder(const fs::path& folder) {
    std::error_code none;
    const fs::path root = fs::canonical(folder, none);
    if (root.empty())
        return;
    searched_.insert(root);
    watchFolder(root);
    const auto options = fs::directory_options::skip_permission_denied;
    for (fs::recursive_directory_iterator next(root, options, none), end; next != end; next.increment(none))
        if (next->is_directory(none))
            watchFolder(next->path());
}

void FileWatch::ignore(const fs::path& file) {
    ignored_.insert(placeOf(file));
}

/// Watches the folder of the file, or the nearest one above that is there.
void FileWatch::watchAbove(const fs::path& file) {
    std::error_code none;
    fs::path folder = file.parent_path();
    while (!fs::is_directory(folder, none) && folder.has_relative_path())
        folder = folder.parent_path();
    watchFolder(folder);
}

void FileWatch::watchFolder(const fs::path& folder) {
    const int watch = inotify_add_watch(descriptor_, folder.c_str(), events);
    if (watch >= 0)
        folders_[watch] = folder;
    else if (errno == ENOSPC || errno == ENOMEM)
        fail("'" + folder.string() + "' cannot be watched");
}

std::optional<std::set<std::string>> FileWatch::wait() {
    using Clock = std::chrono::steady_clock;
    const Interrupt interrupt;
    std::set<std::string> changed;
    std::optional<Clock::time_point> end;
    while (!end || Clock::now() < *end) {
        std::array<pollfd, 2> waiting{{{.fd = descriptor_, .events = POLLIN, .revents = 0},
                                       {.fd = interrupt.descriptor(), .events = POLLIN, .revents = 0}}};
        const int ready = poll(waiting.data(), waiting.size(), end ? static_cast<int>(quiet.count()) : -1);
        if (ready < 0 && errno != EINTR)
            fail("waiting failed");
        if (waiting[1].revents != 0)
            return std::nullopt;
        if (ready == 0)
            break;
        take(changed);
        if (!end && !changed.empty())
            end = Clock::now() + longestUnrest;
    }
    // What is watched may stand in other folders now.
    for (const fs::path& file : files_)
        watchAbove(file);
    for (const fs::path& folder : std::set(searched_))
        addFolder(folder);
    return changed;
}

void FileWatch::take(std::set<std::string>& changed) {
    alignas(inotify_event) std::array<char, 16384> bytes{};
    for (ssize_t size = 0; (size = read(descriptor_, bytes.data(), bytes.size())) > 0;)
        for (ssize_t at = 0; at < size;) {
            inotify_event event{};
            std::memcpy(&event, &bytes[static_cast<std::size_t>(at)], sizeof event);
            if ((event.mask & IN_Q_OVERFLOW) != 0)
                changed.insert("more than can be told");
            const auto folder = folders_.find(event.wd);
            if (folder != folders_.end() && event.len != 0) {
                const fs::path path =
                    folder->second / &bytes[static_cast<std::size_t>(at) + sizeof(inotify_event)];
                if (counts(path, event.mask))
                    changed.insert(path.filename().string());
            }
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
}

bool FileWatch::counts(const fs::path& changed, unsigned what) const {
    std::error_code none;
    const bool isBeingWritten = (what & IN_CREATE) != 0 && fs::is_regular_file(changed, none) &&
                                !fs::is_symlink(changed, none) && fs::hard_link_count(changed, none) == 1;
    if (isBeingWritten || ignored_.contains(changed))
        return false;
    const bool isSearched =
        std::ranges::any_of(searched_, [&](const fs::path& folder) { return isBelow(changed, folder); });
    return std::ranges::any_of(files_, [&](const fs::path& file) {
        return isBelow(file, changed) ||
               (isSearched && file.stem() == changed.stem() && !fs::exists(file, none));
    });
}

} // namespace audlmd::command
