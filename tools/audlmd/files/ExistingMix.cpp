#include "tools/audlmd/files/ExistingMix.hpp"

#include "host/cache/SoundFile.hpp"
#include "tools/audlmd/CommandError.hpp"

namespace audlmd::command {

ExistingMix::ExistingMix(const std::filesystem::path& path, std::optional<FormatId> wanted,
                         OutputLayout layout)
    : path_(path), layout_(layout) {
    if (findFileKind(path) == &rawFileKind())
        openHeaderless(wanted);
    else
        openWithHeader(wanted);
}

/// A file without a header is checked by its size alone: samples of another format or rate cannot be told
/// from the right ones.
void ExistingMix::openHeaderless(std::optional<FormatId> wanted) {
    if (!wanted)
        fail("headerless samples do not tell their format; name it with --format");
    layout_.format = *wanted;
    std::error_code error;
    const std::uintmax_t bytes = std::filesystem::file_size(path_, error);
    if (error)
        fail(error.message());
    if (bytes % layout_.frameBytes() != 0)
        fail("its " + std::to_string(bytes) + " bytes are not a whole number of frames");
    requireSame("length", static_cast<std::int64_t>(bytes / layout_.frameBytes()), layout_.frames, "frames");

    SF_INFO info{};
    info.channels = layout_.channels;
    info.samplerate = layout_.sampleRate;
    info.format = rawFileKind().type | *subtypeIn(rawFileKind(), layout_.format);
    file_.emplace(path_, info);
}

void ExistingMix::openWithHeader(std::optional<FormatId> wanted) {
    // Opened here only to throw: the messages of SoundFile say more than libsndfile's.
    static_cast<void>(SoundFile(path_));
    const SF_INFO& info = file_.emplace(path_).info();
    const std::optional<FormatId> found = file_->format();
    if (!found)
        fail("its samples are in none of the formats that the library sums; convert it to 16, 24 or 32 bits "
             "or float first");
    if (wanted && *wanted != *found)
        fail("its samples are " + std::string(outputFormat(*found).name) + ", but --format asks for " +
             std::string(outputFormat(*wanted).name));
    layout_.format = *found;
    // All three must agree, because the renderer adds sample by sample and converts nothing.
    requireSame("rate", info.samplerate, layout_.sampleRate, "Hz");
    requireSame("channel count", info.channels, layout_.channels, "channels");
    requireSame("length", info.frames, layout_.frames, "frames");
}

void ExistingMix::requireSame(const char* what, std::int64_t here, std::int64_t rendered,
                              const char* unit) const {
    if (here != rendered)
        fail("its " + std::string(what) + " is " + std::to_string(here) + " " + unit +
             ", but what is rendered has " + std::to_string(rendered));
}

void ExistingMix::fail(const std::string& why) const {
    throw CommandError("'" + path_.string() + "' cannot be mixed into: " + why, ExitStatus::input);
}

} // namespace audlmd::command
