#pragma once

#include <csignal>
#include <filesystem>

namespace audlmd::command {

/// Keeps SIGINT, SIGTERM and SIGHUP from this thread, and from those that it starts, until destroyed. For
/// threads, so that their handler always runs where the temporary file is made and moved.
class EndingSignalsBlocked {
public:
    EndingSignalsBlocked();
    ~EndingSignalsBlocked();
    EndingSignalsBlocked(const EndingSignalsBlocked&) = delete;
    EndingSignalsBlocked& operator=(const EndingSignalsBlocked&) = delete;

private:
    sigset_t before_{};
};

/// A new file beside the one that it is going to replace. Unless it is committed, it is gone when the process
/// ends in any way that can be acted on: an exception, SIGINT, SIGTERM or SIGHUP.
///
/// One at a time in a process.
class TemporaryFile {
public:
    /// Throws CommandError where `target`, or its folder, cannot be written.
    explicit TemporaryFile(const std::filesystem::path& target);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// Open for reading and writing.
    int descriptor() const { return descriptor_; }

    /// Takes what was written to the storage device, then puts the file in its target's place. Throws
    /// CommandError where that fails; the target is then as it was.
    void commit();

private:
    std::filesystem::path target_;
    std::filesystem::path path_;
    int descriptor_ = -1;
};

} // namespace audlmd::command
