#pragma once

#include "tools/audlmd/files/OutputFile.hpp"

#include <cstdio>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

namespace audlmd::plot {
struct Figure;
enum class PictureKind;
} // namespace audlmd::plot

namespace audlmd::command {

/// The files that a command writes. Make this before anything is read, so that wrong names are refused at
/// once; making it writes nothing.
class Outputs {
public:
    /// Sound files, and other files beside them. Those with an empty name are not written. `kind` is that of
    /// the sound files; null: their names say it. Throws CommandError for names that cannot be written, and
    /// where two are one file.
    explicit Outputs(const std::vector<std::filesystem::path>& sounds, const FileKind* kind = nullptr,
                     std::initializer_list<std::filesystem::path> others = {});

    /// Adds sound files of one kind, which are not in sounds(). Throws as the constructor.
    std::vector<OutputTarget> add(const std::vector<std::filesystem::path>& sounds, const FileKind& kind);

    const std::vector<OutputTarget>& sounds() const { return sounds_; }
    bool hasSound() const { return !sounds_.empty(); }
    /// Their names, for messages: "'a.wav' and 'b.flac'".
    std::string soundNames() const;

    /// Where the report goes: standard output, or standard error if the samples go to a stream, or another
    /// output to standard output.
    FILE* report() const;

    /// Throws CommandError if one of the outputs is the file at `input`. `what` says what that file is.
    void requireOther(const std::filesystem::path& input, const std::string& what) const;

private:
    std::vector<OutputTarget> sounds_;
    std::vector<OutputPath> all_;
};

/// The kind of picture that the extension names. Throws CommandError for another extension. Call this before
/// long work, so that a wrong name is refused at once.
plot::PictureKind pictureKindOf(const std::filesystem::path& path);

/// Draws a figure into a file. Throws CommandError.
void writePicture(const plot::Figure& figure, const OutputPath& target);

} // namespace audlmd::command
