#pragma once

#include "tools/audlmd/files/OutputPath.hpp"
#include "tools/audlmd/files/TemporaryFile.hpp"

#include <optional>
#include <string_view>

namespace audlmd::command {

/// An output that is open for writing: every output of every command is written through one. A regular file
/// is written as a TemporaryFile, so that a reader sees the old file or the whole new one. A stream has no
/// such protection: it gets what is written at once.
class OpenOutput {
public:
    /// Opens the temporary file, or the stream; an inherited descriptor is duplicated, so that closing leaves
    /// the original open. From now on a closed pipe and a file that grows too large are errors of writing,
    /// not signals. Throws CommandError.
    explicit OpenOutput(const OutputPath& target);
    ~OpenOutput();
    OpenOutput(const OpenOutput&) = delete;
    OpenOutput& operator=(const OpenOutput&) = delete;

    /// Owned by this object: do not close the descriptor. Of a regular file also open for reading.
    int descriptor() const { return temporary_ ? temporary_->descriptor() : stream_; }

    /// Appends the content. Throws CommandError.
    void write(std::string_view content);

    /// Closes the output. Throws CommandError. Call this once.
    void complete();
    /// Gives a regular file, which is complete, its name. Throws CommandError. Call this once, at the end.
    void commit();

private:
    std::filesystem::path path_;
    std::optional<TemporaryFile> temporary_;
    /// -1 where there is a temporary file.
    int stream_ = -1;
};

/// Writes an output that is in memory. Throws CommandError.
void writeOutput(const OutputPath& target, std::string_view content);

} // namespace audlmd::command
