#pragma once

#include <csignal>
#include <filesystem>

namespace audlmd::command {

/// Blocks SIGINT, SIGTERM and SIGHUP in this thread until destroyed. Threads that are started meanwhile
/// inherit the block and keep it: start all threads so, and the handlers always run in the thread that makes
/// and moves temporary files.
class EndingSignalsBlocked {
public:
    EndingSignalsBlocked();
    ~EndingSignalsBlocked();
    EndingSignalsBlocked(const EndingSignalsBlocked&) = delete;
    EndingSignalsBlocked& operator=(const EndingSignalsBlocked&) = delete;

private:
    sigset_t before_{};
};

/// A new file that is going to replace another one in the same folder. A file that is not committed is
/// removed by the destructor, and by SIGINT, SIGTERM and SIGHUP. The folder is the target's, because a file
/// can be renamed only within one file system.
class TemporaryFile {
public:
    /// Throws CommandError where `target`, or its folder, cannot be written.
    explicit TemporaryFile(const std::filesystem::path& target);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// Open for reading and writing. Owned by this object: do not close the descriptor.
    int descriptor() const { return descriptor_; }

    /// Closes the file, when its content is on the storage device. The file takes over the target's
    /// permissions, and its owner and group where the process may give them; not the set-user-id and
    /// set-group-id bits, access lists and attributes. Throws CommandError. Call this once; nothing can be
    /// written afterwards.
    void complete();
    /// Puts the file, which is complete, in the target's place. Throws CommandError on failure; the target is
    /// then as it was. Call this once, at the end.
    void commit();

    /// For the handler of the signals.
    static void removeAll();

private:
    std::filesystem::path target_;
    std::filesystem::path path_;
    int descriptor_ = -1;
    TemporaryFile* older_ = nullptr;
    /// All that there are. Changed with the signals blocked.
    static TemporaryFile* newest_;
};

} // namespace audlmd::command
