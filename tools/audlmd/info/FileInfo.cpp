#include "tools/audlmd/info/FileInfo.hpp"

#include "host/cache/SoundFile.hpp"
#include "tools/audlmd/files/ContainerFile.hpp"

#include <cstring>
#include <limits>

namespace audlmd::command {
namespace {

/// libsndfile's name of a type or of a coding.
std::string nameOfFormat(int format) {
    SF_FORMAT_INFO info{};
    info.format = format;
    return sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof info) == 0 ? info.name : "unknown";
}

/// Without its maker in brackets: "WAV (Microsoft)".
std::string kindOf(int type) {
    const int kind = type & SF_FORMAT_TYPEMASK;
    const std::string name = nameOfFormat(kind == SF_FORMAT_WAVEX ? SF_FORMAT_WAV : kind);
    return name.substr(0, name.find(" ("));
}

/// Without those that hold all others.
std::vector<FileInfo::Chunk> chunksOf(SNDFILE* file) {
    std::vector<FileInfo::Chunk> chunks;
    for (SF_CHUNK_ITERATOR* chunk = sf_get_chunk_iterator(file, nullptr); chunk != nullptr;
         chunk = sf_next_chunk_iterator(chunk)) {
        SF_CHUNK_INFO info{};
        if (sf_get_chunk_size(chunk, &info) != SF_ERR_NO_ERROR)
            continue;
        const std::uint64_t size = info.datalen;
        // Only with the content does libsndfile give the name.
        char first = 0;
        info.data = &first;
        info.datalen = 1;
        if (sf_get_chunk_data(chunk, &info) != SF_ERR_NO_ERROR)
            continue;
        std::string name(info.id, strnlen(info.id, 4));
        if (name != "RIFF" && name != "RIFX" && name != "RF64" && name != "FORM")
            chunks.push_back({std::move(name), size});
    }
    return chunks;
}

/// The lengths of 4 GiB and more stand elsewhere in an RF64 file, and the one of `data` always does.
void sizeData(FileInfo& info) {
    if (info.format)
        for (FileInfo::Chunk& chunk : info.chunks)
            if (chunk.name == "data" && chunk.size == std::numeric_limits<std::uint32_t>::max())
                chunk.size = static_cast<std::uint64_t>(info.frames) * info.layout.size() *
                             outputFormat(*info.format).bytes;
}

} // namespace

FileInfo fileInfo(const std::filesystem::path& path, Truncated truncated,
                  const std::function<void(const FileInfo& info, std::int64_t frames)>& done) {
    SoundFile sound(path, truncated);
    FileInfo info;
    info.isTruncated = sound.isTruncated();
    info.sampleRate = sound.sampleRate();
    info.frames = sound.frames();
    info.timeReference = sound.timeReference();
    info.layout = layoutOfFile(sound);
    info.isLayoutStated = isKnown(sound.layout()) || info.layout.size() <= 2;
    SF_INFO header{};
    const SoundFileHandle file(sf_open(path.c_str(), SFM_READ, &header));
    if (file == nullptr)
        throw SoundFileError("'" + path.string() + "': " + sf_strerror(nullptr));
    info.kind = kindOf(header.format);
    info.coding = nameOfFormat(header.format & SF_FORMAT_SUBMASK);
    info.format = formatOf(header.format);
    info.chunks = chunksOf(file.get());
    sizeData(info);
    info.metadata = readMetadata(path);
    info.levels = measureLevels(sound, info.layout, fullScaleOf(header.format),
                                [&](std::int64_t frames) { done(info, frames); });
    return info;
}

} // namespace audlmd::command
