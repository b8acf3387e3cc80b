#include "tools/audlmd/files/ContainerFile.hpp"

#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/files/SampleLayouts.hpp"

namespace audlmd::command {

ContainerFile::ContainerFile(const std::filesystem::path& path, const SF_INFO& headerless)
    : path_(path), info_(headerless), file_(sf_open(path.c_str(), SFM_READ, &info_)) {
    // Also where a part of the header could not be read, which libsndfile takes for zeros.
    if (file_ == nullptr || sf_error(file_.get()) == SF_ERR_SYSTEM)
        fail(sf_strerror(file_.get()));
}

void ContainerFile::goTo(std::int64_t frame) {
    if (sf_seek(file_.get(), frame, SEEK_SET) != frame)
        fail(sf_strerror(file_.get()));
}

/// libsndfile hands 16 and 32 bits and floats over unchanged, and 8 and 24 bits in the high bits of an int.
void ContainerFile::read(FormatId as, std::byte* interleaved, std::size_t frames) {
    const std::size_t count = frames * static_cast<std::size_t>(info_.channels);
    const auto items = static_cast<sf_count_t>(count);
    sf_count_t got = 0;
    switch (as) {
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
        narrow(as, wide_, interleaved);
        break;
    }
    if (got != items)
        fail("it ends too early, or cannot be read");
}

void ContainerFile::fail(const std::string& why) const {
    throw CommandError("'" + path_.string() + "': " + why, ExitStatus::input);
}

} // namespace audlmd::command
