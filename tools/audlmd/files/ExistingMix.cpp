#include "tools/audlmd/files/ExistingMix.hpp"

#include "host/cache/SoundFile.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/files/SampleLayouts.hpp"

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
    open(info);
}

void ExistingMix::openWithHeader(std::optional<FormatId> wanted) {
    // Opened here only to throw: the messages of SoundFile say more than libsndfile's.
    static_cast<void>(SoundFile(path_));
    SF_INFO info{};
    open(info);
    const std::optional<FormatId> found = formatOf(info.format);
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

void ExistingMix::open(SF_INFO& info) {
    file_.reset(sf_open(path_.c_str(), SFM_READ, &info));
    // Also where a part of the header could not be read, which libsndfile takes for zeros.
    if (file_ == nullptr || sf_error(file_.get()) == SF_ERR_SYSTEM)
        fail(sf_strerror(file_.get()));
}

/// libsndfile hands 16 and 32 bits and floats over unchanged, and 8 and 24 bits in the high bits of an int.
void ExistingMix::read(std::byte* interleaved, std::size_t frames) {
    const std::size_t count = frames * static_cast<std::size_t>(layout_.channels);
    const auto items = static_cast<sf_count_t>(count);
    sf_count_t got = 0;
    switch (layout_.format) {
    case FormatId::f32:
        got = sf_read_float(file_.get(), reinterpret_cast<float*>(interleaved), items);
        break;
    case FormatId::s16:
        got = sf_read_short(file_.get(), reinterpret_cast<short*>(interleaved), items);
        break;
    case FormatId::s24in32:
    case FormatId::s32:
        got = sf_read_int(file_.get(), reinterpret_cast<int*>(interleaved), items);
        break;
    case FormatId::s24:
    case FormatId::s8:
    case FormatId::u8:
        wide_.resize(count);
        got = sf_read_int(file_.get(), wide_.data(), items);
        narrow(layout_.format, wide_, interleaved);
        break;
    }
    if (got != items)
        fail("it ends too early, or cannot be read");
}

void ExistingMix::requireSame(const char* what, std::int64_t here, std::int64_t rendered,
                              const char* unit) const {
    if (here != rendered)
        fail("its " + std::string(what) + " is " + std::to_string(here) + " " + unit +
             ", but what is rendered has " + std::to_string(rendered));
}

void ExistingMix::fail(const std::string& why) const {
    throw CommandError("cannot mix into '" + path_.string() + "': " + why, ExitStatus::input);
}

} // namespace audlmd::command
