#include "tools/audlmd/files/Metadata.hpp"

#include "host/words/Text.hpp"
#include "tools/audlmd/files/OutputFile.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string_view>
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

/// Chunks of WAV, AIFF and CAF files that say nothing beyond samples, tags, layout and broadcast extension.
constexpr std::string_view knownChunks[] = {
    "RIFF", "RIFX", "RF64", "WAVE", "ds64", "fmt ", "fact", "data", "PEAK", "LIST", "bext", "iXML",
    "JUNK", "junk", "PAD ", "FLLR", "FORM", "AIFF", "AIFC", "COMM", "SSND", "FVER", "CHAN", "NAME",
    "AUTH", "(c) ", "ANNO", "APPL", "caff", "desc", "chan", "info", "free", "strg", "audl"};

std::set<std::string> otherChunksOf(SNDFILE* file) {
    std::set<std::string> others;
    for (SF_CHUNK_ITERATOR* chunk = sf_get_chunk_iterator(file, nullptr); chunk != nullptr;
         chunk = sf_next_chunk_iterator(chunk)) {
        char first = 0;
        SF_CHUNK_INFO info{};
        info.data = &first;
        info.datalen = 1;
        if (sf_get_chunk_data(chunk, &info) != SF_ERR_NO_ERROR)
            continue;
        const std::string identifier(info.id, strnlen(info.id, 4));
        if (std::ranges::find(knownChunks, identifier) == std::end(knownChunks))
            others.insert(identifier);
    }
    return others;
}

/// A chunk of the file; empty where there is none.
std::string chunkOf(SNDFILE* file, std::string_view identifier) {
    constexpr unsigned most = 1U << 20;
    SF_CHUNK_INFO chunk{};
    std::ranges::copy(identifier, chunk.id);
    chunk.id_size = static_cast<unsigned>(identifier.size());
    SF_CHUNK_ITERATOR* const iterator = sf_get_chunk_iterator(file, &chunk);
    if (iterator == nullptr || sf_get_chunk_size(iterator, &chunk) != SF_ERR_NO_ERROR || chunk.datalen > most)
        return "";
    std::string bytes(chunk.datalen, '\0');
    chunk.data = bytes.data();
    return sf_get_chunk_data(iterator, &chunk) == SF_ERR_NO_ERROR ? bytes : "";
}

/// The tags of a RIFF list, which libsndfile writes into an RF64 file and does not read there.
std::map<int, std::string> tagsInList(std::string_view list) {
    std::map<int, std::string> tags;
    if (!list.starts_with("INFO"))
        return tags;
    list.remove_prefix(4);
    while (list.size() >= 8) {
        std::uint32_t size = 0;
        std::memcpy(&size, list.data() + 4, sizeof size);
        const std::string_view identifier = list.substr(0, 4);
        const std::string_view text = list.substr(8, size);
        for (const TagName& name : tagNames)
            if (name.identifier == identifier)
                tags[name.tag] = text.substr(0, text.find('\0'));
        // A text of odd length is followed by a byte of nothing.
        list.remove_prefix(std::min<std::size_t>(8 + text.size() + text.size() % 2, list.size()));
    }
    return tags;
}

} // namespace

Metadata metadataOf(SNDFILE* file) {
    Metadata found;
    // First: the iterator through all chunks keeps the identifier that one was looked for by.
    found.others = otherChunksOf(file);
    SF_INFO info{};
    sf_command(file, SFC_GET_CURRENT_SF_INFO, &info, sizeof info);
    if ((info.format & SF_FORMAT_TYPEMASK) == SF_FORMAT_RF64)
        found.tags = tagsInList(chunkOf(file, "LIST"));
    for (const TagName& name : tagNames)
        if (const char* text = sf_get_string(file, name.tag); text != nullptr && *text != '\0')
            found.tags[name.tag] = text;
    Metadata::Broadcast broadcast{};
    if (sf_command(file, SFC_GET_BROADCAST_INFO, &broadcast, sizeof broadcast) == SF_TRUE)
        found.broadcast = broadcast;
    if (isRiff(info.format))
        found.ixml = chunkOf(file, "iXML");
    return found;
}

bool isRiff(int type) {
    const int kind = type & SF_FORMAT_TYPEMASK;
    return kind == SF_FORMAT_WAV || kind == SF_FORMAT_WAVEX || kind == SF_FORMAT_RF64;
}

Metadata readMetadata(const std::filesystem::path& path) {
    SF_INFO info{};
    const SoundFileHandle file(sf_open(path.c_str(), SFM_READ, &info));
    return file != nullptr ? metadataOf(file.get()) : Metadata();
}

void writeTags(SNDFILE* file, int type, const Metadata& metadata) {
    for (const auto& [tag, text] : metadata.tags)
        sf_set_string(file, tag, text.c_str());
    if (!isRiff(type) || metadata.ixml.empty())
        return;
    SF_CHUNK_INFO chunk{};
    std::ranges::copy(std::string_view("iXML"), chunk.id);
    chunk.id_size = 4;
    chunk.datalen = static_cast<unsigned>(metadata.ixml.size());
    // Only read, although libsndfile does not say so.
    chunk.data = const_cast<char*>(metadata.ixml.data());
    sf_set_chunk(file, &chunk);
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
