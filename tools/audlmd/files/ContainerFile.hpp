#pragma once

#include "tools/audlmd/files/OutputFile.hpp"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

namespace audlmd::command {

/// Reads a sound file as containers of its own format, without a way through floats, which have 24 bits.
class ContainerFile {
public:
    /// `headerless` describes the samples of a file without a header. Throws CommandError if the file cannot
    /// be opened. Open it as a SoundFile first: the messages of that say more than libsndfile's.
    explicit ContainerFile(const std::filesystem::path& path, const SF_INFO& headerless = {});

    const SF_INFO& info() const { return info_; }
    /// Nothing where the library has no such format.
    std::optional<FormatId> format() const { return formatOf(info_.format); }

    /// Makes a frame the next one. Throws CommandError.
    void goTo(std::int64_t frame);
    /// Fills `interleaved` with the next frames, the channels side by side. `as` is the format of the file,
    /// or s24in32 for a file of 32 bits. Throws CommandError if the file ends too early or cannot be read.
    void read(FormatId as, std::byte* interleaved, std::size_t frames);

private:
    [[noreturn]] void fail(const std::string& why) const;

    std::filesystem::path path_;
    SF_INFO info_;
    SoundFileHandle file_;
    /// For formats that libsndfile reads as ints.
    std::vector<int> wide_;
};

} // namespace audlmd::command
