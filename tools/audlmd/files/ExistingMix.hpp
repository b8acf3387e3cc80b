#pragma once

#include "tools/audlmd/files/OutputFile.hpp"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <vector>

namespace audlmd::command {

/// The file that a render is mixed into, read as the containers that are summed over. It is only read.
class ExistingMix {
public:
    /// Throws CommandError unless the file has the layout's channels, rate and frames, and the wanted format
    /// where there is one. Headerless samples need a wanted format, and have no rate of their own.
    ExistingMix(const std::filesystem::path& path, std::optional<FormatId> wanted, OutputLayout layout);

    FormatId format() const { return layout_.format; }

    /// Fills `interleaved` with the next frames. Throws CommandError.
    void read(std::byte* interleaved, std::size_t frames);

private:
    void openHeaderless(std::optional<FormatId> wanted);
    void openWithHeader(std::optional<FormatId> wanted);
    void requireSame(const char* what, std::int64_t here, std::int64_t rendered, const char* unit) const;
    [[noreturn]] void fail(const std::string& why) const;

    std::filesystem::path path_;
    OutputLayout layout_;
    SoundFileHandle file_;
    std::vector<int> wide_;
};

} // namespace audlmd::command
