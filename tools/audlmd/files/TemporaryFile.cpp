#include "tools/audlmd/files/TemporaryFile.hpp"

#include "tools/audlmd/files/OutputPath.hpp"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace audlmd::command {
namespace {

constexpr std::array endingSignals{SIGINT, SIGTERM, SIGHUP};

/// Uses only what is safe in a signal handler: unlink, signal and raise. The second signal has the default
/// action, so the shell sees how the process ended.
extern "C" void removeAndEnd(int signal) {
    TemporaryFile::removeAll();
    std::signal(signal, SIG_DFL);
    std::raise(signal); // delivered when this handler returns
}

void handleEndingSignals() {
    struct sigaction action {};
    action.sa_handler = &removeAndEnd;
    for (const int signal : endingSignals) {
        struct sigaction before {};
        sigaction(signal, nullptr, &before);
        // A signal that is ignored from the start, as under nohup, stays ignored.
        if (before.sa_handler != SIG_IGN)
            sigaction(signal, &action, nullptr);
    }
}

/// The permissions of any new file. The mask of the process can only be read by setting it, so the mask is
/// set back at once.
mode_t permissionsOfNewFiles() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

/// Gives a file the owner and the group of the one in its place, as far as the process may, and the
/// permissions. Not the bits above them: a set-user-id bit was meant for the old content and the old owner.
int takeOver(int descriptor, const std::filesystem::path& target) {
    struct stat existing {};
    if (stat(target.c_str(), &existing) != 0)
        return fchmod(descriptor, permissionsOfNewFiles());
    constexpr auto unchanged = static_cast<gid_t>(-1);
    // Who may not give a file away may still give it to one of the own groups.
    if (fchown(descriptor, existing.st_uid, existing.st_gid) != 0 &&
        fchown(descriptor, unchanged, existing.st_gid) != 0)
        errno = 0;
    return fchmod(descriptor, existing.st_mode & 0777);
}

} // namespace

TemporaryFile* TemporaryFile::newest_ = nullptr;

EndingSignalsBlocked::EndingSignalsBlocked() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : endingSignals)
        sigaddset(&signals, signal);
    pthread_sigmask(SIG_BLOCK, &signals, &before_);
}

EndingSignalsBlocked::~EndingSignalsBlocked() {
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

TemporaryFile::TemporaryFile(const std::filesystem::path& target) : target_(target) {
    // Renaming replaces a file that may not be written, so the permission is checked here.
    if (access(target.c_str(), F_OK) == 0 && access(target.c_str(), W_OK) != 0)
        failToWrite(target, errno);

    handleEndingSignals();
    std::string name = (target.parent_path() / ".audlmd-XXXXXX").string();
    const EndingSignalsBlocked blocked;
    descriptor_ = mkostemp(name.data(), O_CLOEXEC);
    if (descriptor_ < 0)
        failToWrite(target, errno);
    path_ = name;
    older_ = std::exchange(newest_, this);
}

TemporaryFile::~TemporaryFile() {
    // A signal after unlink() would remove a file of the same name that another program has made since.
    const EndingSignalsBlocked blocked;
    if (descriptor_ >= 0)
        close(descriptor_);
    if (!path_.empty())
        unlink(path_.c_str());
    TemporaryFile** link = &newest_;
    while (*link != this)
        link = &(*link)->older_;
    *link = older_;
}

void TemporaryFile::removeAll() {
    for (const TemporaryFile* file = newest_; file != nullptr; file = file->older_)
        if (!file->path_.empty())
            unlink(file->path_.c_str());
}

void TemporaryFile::complete() {
    // On the device before the name is: after a power failure the name must not lead to an empty file.
    if (takeOver(descriptor_, target_) != 0 || fsync(descriptor_) != 0)
        failToWrite(target_, errno);
    if (close(std::exchange(descriptor_, -1)) != 0)
        failToWrite(target_, errno);
}

void TemporaryFile::commit() {
    const EndingSignalsBlocked blocked;
    if (rename(path_.c_str(), target_.c_str()) != 0)
        failToWrite(target_, errno);
    path_.clear();
}

} // namespace audlmd::command
