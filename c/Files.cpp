#include "c/Files.hpp"

#include "host/media/DecodedCache.hpp"
#include "host/services/SampleRates.hpp"
#include "host/timeline/MediaFinder.hpp"
#include "host/timeline/TimelineError.hpp"
#include "host/timeline/TimelineText.hpp"
#include "host/words/Numbers.hpp"
#include "host/words/Text.hpp"

#include <fstream>
#include <limits>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace audlmd::c {
namespace {

constexpr int mostChannels = 64;

/// Opens media, films included. What was decoded stays as long as this object.
class Opener {
public:
    explicit Opener(Options& options) {
        if (!options.takeFlag("films", true))
            return;
        DecodedCacheOptions how;
        if (const std::optional<std::string> folder = options.take("cache"))
            how.folder = *folder;
        films_ = std::make_unique<DecodedCache>(std::move(how));
    }

    /// `stream` counts from 1.
    PlayableFile playable(const std::filesystem::path& path, int stream) const {
        return films_ ? films_->playable(path, stream - 1) : PlayableFile{path};
    }

private:
    std::unique_ptr<DecodedCache> films_;
};

bool isTimeline(const std::filesystem::path& path) {
    if (!timeline::contentOfBundle(path).empty())
        return true;
    std::string start(64, ' ');
    std::ifstream(path, std::ios::binary).read(start.data(), std::ssize(start));
    return timeline::mayBeTimeline(start);
}

timeline::TimelineText readText(const std::filesystem::path& path) {
    try {
        return timeline::readTimelineText(path);
    } catch (const std::system_error& error) {
        throw std::runtime_error(words::quoted(words::printable(path.string())) +
                                 " cannot be read: " + error.code().message());
    }
}

Sound openTimeline(const std::filesystem::path& path, const std::shared_ptr<const Opener>& opener,
                   Options& options) {
    timeline::MediaSearch search{
        .playable = [opener](const std::filesystem::path& medium, std::optional<int> stream) {
            return opener->playable(medium, stream.value_or(1));
        }};
    if (const std::optional<std::string> folder = options.take("media"))
        search.folders.emplace_back(*folder);
    const auto finder = std::make_shared<timeline::MediaFinder>(std::move(search));
    const auto [text, folder] = readText(path);
    const timeline::ReadOptions how{
        .sampleRate = options.takeWhole("sampleRate", lowestSampleRate, highestSampleRate).value_or(48000),
        .folder = folder,
        .timeline = options.take("timeline").value_or(""),
        .media = [&](const std::string& medium) { return finder->factsOf(medium); }};
    const MixOptions mix = takeMixOptions(options);
    options.finish();
    try {
        return mixed(
            timeline::readTimeline(text, how),
            [finder](const std::string& medium) { return finder->open(medium); }, mix);
    } catch (const timeline::TimelineError& error) {
        throw std::runtime_error(words::quoted(words::printable(path.string())) + ": " + error.what());
    }
}

} // namespace

MixOptions takeMixOptions(Options& options) {
    MixOptions mix;
    mix.threads = static_cast<std::size_t>(options.takeWhole("threads", 1, 1024).value_or(0));
    const std::optional<std::string> channels = options.take("channels");
    if (!channels)
        return mix;
    mix.channels = layoutNamed(*channels);
    if (mix.channels)
        return mix;
    const std::optional<int> number = words::wholeIn<int>(*channels);
    if (!number || *number < 1 || *number > mostChannels)
        throw std::invalid_argument("option 'channels': " + words::quoted(words::printable(*channels)) +
                                    " is not a number from 1 to " + std::to_string(mostChannels) +
                                    ", nor one of " + layoutNames());
    mix.channels = unknownLayout(static_cast<std::size_t>(*number));
    return mix;
}

Sound openFile(const std::filesystem::path& path, Options options) {
    const auto opener = std::make_shared<const Opener>(options);
    if (isTimeline(path))
        return openTimeline(path, opener, options);
    const int stream = options.takeWhole("stream", 1, std::numeric_limits<int>::max()).value_or(1);
    options.finish();
    // The sources have their file open, so that the opener is not needed any more.
    return {.media = openSoundFile(opener->playable(path, stream).path.string())};
}

} // namespace audlmd::c
