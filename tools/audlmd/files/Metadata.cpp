#include "tools/audlmd/files/Metadata.hpp"

#include "host/words/Text.hpp"
#include "tools/audlmd/files/OutputFile.hpp"
#include "tools/audlmd/files/RiffChunks.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <iterator>
#include <limits>
#include <span>
#include <string_view>
#include <unistd.h>
#include <utility>
#include <vector>

namespace audlmd::command {
namespace {

/// The name of a tag, and its identifier in a RIFF file.
struct TagName {
    int tag;
    std::string_view name;
    std::string_view identifier;
};

constexpr std::array<TagName, 10> tagNames{{{SF_STR_TITLE, "title", "INAM"},
                                            {SF_STR_COPYRIGHT, "copyright", "ICOP"},
                                            {SF_STR_SOFTWARE, "software", "ISFT"},
                                            {SF_STR_ARTIST, "artist", "IART"},
                                            {SF_STR_COMMENT, "comment", "ICMT"},
                                            {SF_STR_DATE, "date", "ICRD"},
                                            {SF_STR_ALBUM, "album", "IPRD"},
                                            {SF_STR_LICENSE, "license", ""},
                                            {SF_STR_TRACKNUMBER, "track number", "ITRK"},
                                            {SF_STR_GENRE, "genre", "IGNR"}}};

/// Chunks that say nothing beyond samples, tags, layout and broadcast extension, which libsndfile reads.
constexpr std::string_view knownChunks[] = {
    "RIFF", "RIFX", "RF64", "WAVE", "ds64", "fmt ", "fact", "data", "PEAK", "LIST", "bext", "JUNK",
    "junk", "PAD ", "FLLR", "FORM", "AIFF", "AIFC", "COMM", "SSND", "FVER", "CHAN", "NAME", "AUTH",
    "(c) ", "ANNO", "APPL", "caff", "desc", "chan", "info", "free", "strg", "audl"};

/// Of a RIFF file, chunks that libsndfile does not understand, or not all of them.
constexpr std::string_view readByUs[] = {"LIST", "iXML", "cue ", "smpl"};

bool isAmong(std::span<const std::string_view> identifiers, std::string_view identifier) {
    return std::ranges::find(identifiers, identifier) != identifiers.end();
}

/// By libsndfile, for files that are not RIFF files.
std::set<std::string> otherChunksOf(SNDFILE* file) {
    std::set<std::string> others;
    for (SF_CHUNK_ITERATOR* chunk = sf_get_chunk_iterator(file, nullptr); chunk != nullptr;
         chunk = sf_next_chunk_iterator(chunk)) {
        SF_CHUNK_INFO info{};
        // By the length of an empty chunk, libsndfile divides.
        if (sf_get_chunk_size(chunk, &info) != SF_ERR_NO_ERROR || info.datalen == 0)
            continue;
        char first = 0;
        info.data = &first;
        info.datalen = 1;
        if (sf_get_chunk_data(chunk, &info) != SF_ERR_NO_ERROR)
            continue;
        const std::string identifier(info.id, strnlen(info.id, 4));
        if (!isAmong(knownChunks, identifier))
            others.insert(identifier);
    }
    return others;
}

/// The tags of RIFF lists, which libsndfile writes into an RF64 file and does not read there.
void addTags(const std::vector<std::string>& lists, std::map<int, std::string>& tags) {
    for (const std::string_view list : lists)
        if (list.starts_with("INFO"))
            for (const auto& [identifier, text] : chunksIn(list.substr(4)))
                for (const TagName& name : tagNames)
                    if (name.identifier == identifier)
                        tags[name.tag] = text.substr(0, text.find('\0'));
}

/// What libsndfile does not read of a RIFF file.
void takeChunks(const FileChunks& chunks, Metadata& found) {
    if (const auto lists = chunks.find("LIST"); lists != chunks.end())
        addTags(lists->second, found.tags);
    found.ixml = contentOf(chunks, "iXML");
    found.markers = markersOfChunks(chunks);
    found.sampler = samplerOfChunk(contentOf(chunks, "smpl"));
    for (const auto& [identifier, contents] : chunks)
        if (isAmong(readByUs, identifier) ? std::ranges::find(contents, "") != contents.end()
                                          : !isAmong(knownChunks, identifier))
            found.others.insert(identifier);
    if (chunks.contains("smpl") && !found.sampler)
        found.others.insert("smpl");
}

/// A number of cue points as libsndfile has them, behind their count.
class CueTable {
public:
    explicit CueTable(std::uint32_t count)
        : numbers_(1 + count * (sizeof(SF_CUE_POINT) / sizeof(std::uint32_t))) {
        numbers_.front() = count;
    }
    std::uint32_t* data() { return numbers_.data(); }
    int bytes() const { return static_cast<int>(numbers_.size() * sizeof(std::uint32_t)); }
    std::uint32_t count() const { return numbers_.front(); }
    SF_CUE_POINT* points() { return reinterpret_cast<SF_CUE_POINT*>(numbers_.data() + 1); }

private:
    std::vector<std::uint32_t> numbers_;
};

/// Into an AIFF, whose header libsndfile makes in 50 KiB.
constexpr std::size_t mostMarkerBytes = std::size_t{32} * 1024;

/// Of an AIFF.
std::vector<Marker> markersByLibsndfile(SNDFILE* file) {
    std::vector<Marker> markers;
    std::uint32_t count = 0;
    sf_command(file, SFC_GET_CUE_COUNT, &count, sizeof count);
    CueTable cues(count);
    if (sf_command(file, SFC_GET_CUE, cues.data(), cues.bytes()) != SF_TRUE)
        return markers;
    for (const SF_CUE_POINT& cue : std::span(cues.points(), std::min(count, cues.count())))
        markers.push_back(
            {.position = cue.sample_offset, .name = {cue.name, strnlen(cue.name, sizeof cue.name)}});
    std::ranges::stable_sort(markers, {}, &Marker::position);
    return markers;
}

void writeMarkersByLibsndfile(SNDFILE* file, const std::vector<Marker>& markers) {
    std::size_t bytes = 0;
    for (const Marker& marker : markers)
        bytes += 8 + marker.name.size();
    if (bytes == 0 || bytes > mostMarkerBytes ||
        markers.back().position > std::numeric_limits<std::uint32_t>::max())
        return;
    CueTable cues(static_cast<std::uint32_t>(markers.size()));
    for (std::size_t n = 0; n < markers.size(); ++n) {
        SF_CUE_POINT& cue = cues.points()[n];
        cue.indx = static_cast<std::int32_t>(n + 1);
        cue.position = cue.sample_offset = static_cast<std::uint32_t>(markers[n].position);
        markers[n].name.copy(cue.name, sizeof cue.name - 1);
    }
    sf_command(file, SFC_SET_CUE, cues.data(), cues.bytes());
}

bool isAiff(int type) {
    return (type & SF_FORMAT_TYPEMASK) == SF_FORMAT_AIFF;
}

} // namespace

Metadata metadataOf(SNDFILE* file, int descriptor) {
    Metadata found;
    SF_INFO info{};
    sf_command(file, SFC_GET_CURRENT_SF_INFO, &info, sizeof info);
    found.sampleRate = info.samplerate;
    if (const FileChunks chunks = readRiffChunks(descriptor, readByUs); !chunks.empty())
        takeChunks(chunks, found);
    else
        found.others = otherChunksOf(file);
    if (isAiff(info.format) && !(found.markers = markersByLibsndfile(file)).empty())
        found.others.erase("MARK");
    for (const TagName& name : tagNames)
        if (const char* text = sf_get_string(file, name.tag); text != nullptr && *text != '\0')
            found.tags[name.tag] = text;
    Metadata::Broadcast broadcast{};
    if (sf_command(file, SFC_GET_BROADCAST_INFO, &broadcast, sizeof broadcast) == SF_TRUE)
        found.broadcast = broadcast;
    return found;
}

std::string tagName(int tag) {
    const auto* const found = std::ranges::find(tagNames, tag, &TagName::tag);
    return found != tagNames.end() ? std::string(found->name) : "tag " + std::to_string(tag);
}

bool isRiff(int type) {
    const int kind = type & SF_FORMAT_TYPEMASK;
    return kind == SF_FORMAT_WAV || kind == SF_FORMAT_WAVEX || kind == SF_FORMAT_RF64;
}

Metadata readMetadata(const std::filesystem::path& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    CheckedDescriptor checked(descriptor);
    SF_INFO info{};
    const SoundFileHandle file(checked.open(SFM_READ, info));
    Metadata found = file != nullptr ? metadataOf(file.get(), descriptor) : Metadata();
    close(descriptor);
    return found;
}

void moveInto(Metadata& metadata, const RenderedPart& part, int sampleRate) {
    const std::vector<Marker> all =
        atRate(std::exchange(metadata.markers, {}), metadata.sampleRate, sampleRate);
    metadata.markers = markersIn(part, all);
    if (const std::size_t outside = all.size() - metadata.markers.size(); outside != 0)
        metadata.dropped.push_back(words::counted(outside, "marker") + " outside the range");
    if (metadata.sampler) {
        const std::size_t before = metadata.sampler->loops.size();
        metadata.sampler->loops = loopsIn(part, metadata.sampler->loops);
        const std::size_t cut = before - metadata.sampler->loops.size();
        if (part.reverse || part.speed != 1.0 || metadata.sampleRate != sampleRate) {
            metadata.sampler.reset();
            metadata.dropped.emplace_back("loops (smpl)");
        } else if (cut != 0)
            metadata.dropped.push_back(words::counted(cut, "loop") + " outside the range");
    }
    metadata.sampleRate = sampleRate;
}

void writeTags(SNDFILE* file, int type, const Metadata& metadata) {
    for (const auto& [tag, text] : metadata.tags)
        sf_set_string(file, tag, text.c_str());
    if (isAiff(type))
        writeMarkersByLibsndfile(file, metadata.markers);
}

std::string riffChunksOf(const Metadata& metadata) {
    return (metadata.ixml.empty() ? "" : riffChunk("iXML", metadata.ixml)) +
           chunksOfMarkers(metadata.markers) + (metadata.sampler ? chunkOfSampler(*metadata.sampler) : "");
}

std::string missingIn(const Metadata& found, const Metadata& wanted) {
    std::vector<std::string> missing;
    for (const TagName& name : tagNames)
        if (wanted.tags.contains(name.tag) && !found.tags.contains(name.tag))
            missing.emplace_back(name.name);
    if (wanted.broadcast && !found.broadcast)
        missing.emplace_back("bext");
    if (!wanted.ixml.empty() && found.ixml.empty())
        missing.emplace_back("iXML");
    std::ranges::copy(lostMarkers(found.markers, wanted.markers), std::back_inserter(missing));
    if (wanted.sampler && !found.sampler)
        missing.emplace_back("loops (smpl)");
    std::ranges::copy(wanted.dropped, std::back_inserter(missing));
    std::ranges::set_difference(wanted.others, found.others, std::back_inserter(missing));
    constexpr std::size_t most = 12;
    if (missing.size() > most) {
        missing.resize(most);
        missing.emplace_back("and more");
    }
    std::string text;
    for (const std::string& name : missing)
        text += (text.empty() ? "" : ", ") + words::printable(name);
    return text;
}

} // namespace audlmd::command
