#pragma once

#include "tools/audlmd/files/ContainerFile.hpp"

#include <cstddef>
#include <filesystem>
#include <optional>

namespace audlmd::command {

/// Reads the file that a render is mixed into, as containers of its own format. The renderer adds to them.
/// The file is never changed. Use this for a mix in steps: the output replaces the file when it is complete,
/// see OutputFile.
class ExistingMix {
public:
    /// Throws CommandError unless the file has the layout's channels, rate and frames, and the wanted format
    /// if one is given. The layout's format is ignored. A .raw or .pcm file does not tell its format and
    /// rate: give the format, and the rate is taken to be the layout's.
    ExistingMix(const std::filesystem::path& path, std::optional<FormatId> wanted, OutputLayout layout);

    /// The format of the file, and so of the sum.
    FormatId format() const { return layout_.format; }

    /// Fills `interleaved` with the next frames: containers, the channels side by side. Throws CommandError
    /// if the file ends too early or cannot be read. `frames` may differ from call to call; the calls
    /// together read layout.frames.
    void read(std::byte* interleaved, std::size_t frames) {
        file_->read(layout_.format, interleaved, frames);
    }

private:
    void openHeaderless(std::optional<FormatId> wanted);
    void openWithHeader(std::optional<FormatId> wanted);
    /// Fails unless two numbers are equal. The words name the number and its unit in the message.
    void requireSame(const char* what, std::int64_t here, std::int64_t rendered, const char* unit) const;
    [[noreturn]] void fail(const std::string& why) const;

    std::filesystem::path path_;
    OutputLayout layout_;
    /// Set after construction.
    std::optional<ContainerFile> file_;
};

} // namespace audlmd::command
