#include "host/media/ForeignSound.hpp"

#include "host/cache/SoundFile.hpp"
#include "host/cache/ZipArchive.hpp"
#include "host/media/Program.hpp"
#include "host/media/WavStream.hpp"
#include "host/words/Numbers.hpp"
#include "host/words/Text.hpp"
#include "host/words/Times.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

namespace audlmd {
namespace {

using Json = nlohmann::json;

/// Formats that are lists of other files, whose changes nobody would notice.
constexpr std::array<std::string_view, 6> lists{"concat", "dash", "hls", "imf", "rtsp", "sdp"};

/// What ffprobe says of the wanted stream, in seconds; negative where the file does not say it.
struct Facts {
    double length = -1.0;
    double start = -1.0;
    double startOfAll = -1.0;
    /// By the timecode, of the file's start.
    std::optional<double> clock;

    /// How far the sound begins behind the file's start.
    double late() const { return start < 0.0 || startOfAll < 0.0 ? 0.0 : start - startOfAll; }
};

SoundFileError failure(const ForeignSound& sound, const std::string& why) {
    return SoundFileError{"'" + sound.path.string() + "': " + why};
}

std::string programFor(const ForeignSound& sound, const std::string& name) {
    const std::optional<std::string> program = findProgram(name);
    if (!program)
        throw failure(sound, "libsndfile does not read it, and the program ffmpeg, which may, is not "
                             "installed (Debian: apt-get install ffmpeg)");
    return *program;
}

/// Options in front of the input, and the input as a plain file, whatever its name looks like. No network,
/// and no guess of what channels are.
std::vector<std::string> wordsFor(const ForeignSound& sound, const std::string& program,
                                  const std::vector<std::string>& options,
                                  const std::vector<std::string>& output = {}) {
    std::vector<std::string> words{programFor(sound, program), "-protocol_whitelist", "file"};
    words.insert(words.end(), options.begin(), options.end());
    std::error_code none;
    if (const auto member =
            std::filesystem::exists(sound.path, none) ? std::nullopt : findZipMember(sound.path)) {
        const FilePart part = storedPartOf(*member, sound.path);
        words[2] = "file,subfile";
        words.insert(words.end(), {"-i", "subfile,,start," + std::to_string(part.offset) + ",end," +
                                             std::to_string(part.offset + part.length) +
                                             ",,:file:" + std::filesystem::absolute(part.file).string()});
    } else
        words.insert(words.end(), {"-i", "file:" + std::filesystem::absolute(sound.path).string()});
    words.insert(words.end(), output.begin(), output.end());
    return words;
}

/// The last line that says something, without the name of the part of ffmpeg that says it.
std::string lastLine(std::string_view text) {
    while (!text.empty()) {
        const std::size_t start = text.rfind('\n') + 1;
        std::string_view line = words::trimmed(text.substr(start));
        text.remove_suffix(text.size() - (start == 0 ? 0 : start - 1));
        if (line.starts_with('['))
            line = words::trimmed(line.substr(std::min(line.find(']') + 1, line.size())));
        if (line.starts_with("file:") || line.starts_with("subfile,"))
            line = words::trimmed(line.substr(std::min(line.rfind(": ") + 1, line.size())));
        if (!line.empty())
            return words::printable(line, 200);
    }
    return "";
}

void requireWholeRun(const ForeignSound& sound, const ProgramEnd& end, const std::string& did) {
    const auto seconds = std::chrono::duration<double>(sound.patience).count();
    if (end.isHung)
        throw failure(sound, "ffmpeg has " + did + " nothing for " + words::numberText(seconds) +
                                 " s, and was ended");
    if (end.status == 0)
        return;
    const std::string how = end.status > 128 ? "signal " + std::to_string(end.status - 128)
                                             : "status " + std::to_string(end.status);
    const std::string line = lastLine(end.errors);
    throw failure(sound, "ffmpeg ended with " + how + (line.empty() ? "" : ": " + line));
}

double secondsIn(const Json& object, const char* key) {
    const auto found = object.find(key);
    const bool isText = found != object.end() && found->is_string();
    return isText ? words::numberIn(found->get_ref<const std::string&>()).value_or(-1.0) : -1.0;
}

/// The time that the first timecode says, at the rate of the pictures.
std::optional<double> clockIn(const Json& streams, const Json& format) {
    const auto timecodeOf = [](const Json& object) {
        return object.value("tags", Json::object()).value("timecode", "");
    };
    std::string timecode = timecodeOf(format);
    for (const Json& stream : streams)
        if (timecode.empty())
            timecode = timecodeOf(stream);
    for (const Json& stream : streams) {
        std::string rate = stream.value("r_frame_rate", "");
        if (rate.ends_with("/1"))
            rate.resize(rate.size() - 2);
        if (const auto time = words::timeIn(timecode + "@" + rate))
            return time->seconds;
    }
    return std::nullopt;
}

Facts factsIn(const ForeignSound& sound, const Json& answer, bool isLengthGuessed) {
    const Json streams = answer.value("streams", Json::array());
    const Json format = answer.value("format", Json::object());
    std::vector<Json> sounds;
    std::ranges::copy_if(streams, std::back_inserter(sounds),
                         [](const Json& stream) { return stream.value("codec_type", "") == "audio"; });
    const std::string name = format.value("format_name", "");
    if (std::ranges::find(lists, name) != lists.end())
        throw failure(sound, "a list of other files (" + name + "); name the files themselves");
    const auto index = static_cast<std::size_t>(sound.stream);
    if (sounds.empty())
        throw failure(sound, "there is no sound in it");
    if (index >= sounds.size())
        throw failure(sound, "there is no sound stream " + std::to_string(sound.stream + 1) + ", it has " +
                                 std::to_string(sounds.size()));
    Facts facts;
    if (!isLengthGuessed)
        facts.length = secondsIn(sounds[index], "duration");
    facts.start = secondsIn(sounds[index], "start_time");
    facts.startOfAll = secondsIn(format, "start_time");
    facts.clock = clockIn(streams, format);
    return facts;
}

Facts probe(const ForeignSound& sound) {
    std::string text;
    const auto keep = [&](std::span<const std::byte> bytes) {
        constexpr std::size_t most = std::size_t{1} << 24;
        if (text.size() < most)
            text.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    };
    programFor(sound, "ffmpeg");
    const ProgramEnd end = runProgram(
        {.words = wordsFor(sound, "ffprobe",
                           {"-v", "warning", "-of", "json", "-show_entries",
                            "stream=codec_type,duration,start_time,r_frame_rate:stream_tags=timecode:format="
                            "format_name,start_time:format_tags=timecode"}),
         .take = keep,
         .patience = sound.patience});
    if (!end.isHung && end.status == 1)
        throw failure(sound, "neither libsndfile (" + sound.reason + ") nor ffmpeg (" + lastLine(end.errors) +
                                 ") reads it");
    requireWholeRun(sound, end, "told");
    try {
        return factsIn(sound, Json::parse(text), end.errors.find("Estimating duration") != std::string::npos);
    } catch (const Json::exception&) {
        throw failure(sound, "what ffprobe says of it cannot be understood");
    }
}

std::string secondsText(double seconds) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.3f s", seconds);
    return text.data();
}

/// `decoded` in seconds.
std::string noteOn(const Facts& facts, double decoded, const std::string& complaint) {
    // Containers round times, to a frame of pictures at worst.
    constexpr double rounding = 0.05;
    std::string note;
    const auto add = [&note](const std::string& text) { note += (note.empty() ? "" : "; ") + text; };
    if (facts.length - decoded > rounding)
        add("its sound ends after " + secondsText(decoded) + " of the " + secondsText(facts.length) +
            " that it states");
    if (facts.late() > rounding)
        add("its sound begins " + secondsText(facts.late()) + " after the rest, and is taken from there on");
    if (!complaint.empty())
        add("ffmpeg says: " + complaint);
    return note;
}

} // namespace

std::string ForeignSound::decode(const ForeignSink& sink) const {
    const Facts facts = probe(*this);
    ForeignFormat format;
    std::uint64_t bytes = 0;
    WavStream wav(
        [&](const ForeignFormat& found) {
            format = found;
            if (facts.clock)
                format.timeReference = std::llround((*facts.clock + facts.late()) * format.sampleRate);
            sink.begin(format, std::llround(std::clamp(facts.length, 0.0, 1e9) * format.sampleRate));
        },
        [&](std::span<const std::byte> samples) {
            bytes += samples.size();
            sink.take(samples);
        });
    const auto take = [&](std::span<const std::byte> printed) {
        try {
            wav.take(printed);
        } catch (const std::domain_error& error) {
            throw failure(*this, error.what());
        }
    };
    const ProgramEnd end =
        runProgram({.words = wordsFor(*this, "ffmpeg", {"-v", "error", "-nostdin", "-guess_layout_max", "0"},
                                      {"-map", "0:a:" + std::to_string(stream), "-map_metadata", "-1", "-c:a",
                                       "pcm_f32le", "-fflags", "+bitexact", "-f", "wav", "pipe:1"}),
                    .take = take,
                    .patience = patience});
    requireWholeRun(*this, end, "decoded");
    const std::size_t frame = static_cast<std::size_t>(format.channels) * sizeof(float);
    if (frame == 0 || bytes % frame != 0)
        throw failure(*this, "ffmpeg ended half-way");
    return noteOn(facts, static_cast<double>(bytes / frame) / format.sampleRate, lastLine(end.errors));
}

} // namespace audlmd
