#include "tools/audlmd/cache/DecodingOptions.hpp"

#include "contract/LoadServices.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Progress.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <system_error>

namespace audlmd::command {
namespace {

constexpr int mostStreams = 1024;

std::function<void(std::int64_t)> barFor(const std::filesystem::path& medium, std::int64_t expected,
                                         int sampleRate, bool isShown) {
    const std::int64_t total = expected > 0 ? expected : std::numeric_limits<std::int64_t>::max();
    const auto bar = std::make_shared<Progress>(
        total, sampleRate, isShown, "decoding " + words::printable(medium.filename().string(), 30));
    return [bar, total](std::int64_t done) { bar->update(std::min(done, total)); };
}

} // namespace

void DecodingOptions::declareCache(CLI::App& app, const std::string& group) {
    app.add_option("--cache", folder,
                   "Where decoded inputs are kept (default: audlmd in XDG_CACHE_HOME or ~/.cache)")
        ->option_text("DIR")
        ->group(group);
}

void DecodingOptions::declareStream(CLI::App& app, const std::string& group) {
    app.add_option("--stream", stream, "Which stream of sound of a film (default 1)")
        ->option_text("N")
        ->check(CLI::Range(1, mostStreams))
        ->group(group);
}

std::uintmax_t DecodingOptions::limit() {
    constexpr double standard = 32.0;
    constexpr double most = 1e9;
    const double gigabytes = config_double("DecodedCacheGigabytes", standard);
    return static_cast<std::uintmax_t>(std::clamp(gigabytes, 0.0, most) * 1e9);
}

DecodedCache& DecodingOptions::cache() const {
    if (folder.empty())
        throw CommandError("neither XDG_CACHE_HOME nor HOME says where decoded inputs can be kept; name a "
                           "folder with --cache");
    if (cache_ == nullptr)
        cache_ = std::make_shared<DecodedCache>(DecodedCacheOptions{
            .folder = folder,
            .limit = limit(),
            .watch = [this](const std::filesystem::path& medium, std::int64_t expected, int sampleRate) {
                return barFor(medium, expected, sampleRate, isShown_);
            }});
    return *cache_;
}

PlayableFile DecodingOptions::playable(const std::filesystem::path& input, std::optional<int> ofStream,
                                       const JobStyle& style) const {
    isShown_ = !style.quiet && !style.json;
    try {
        PlayableFile file = cache().playable(input, ofStream.value_or(1) - 1);
        if (!file.note.empty())
            file.note = words::quoted(words::printable(input.string())) + ": " + file.note;
        return file;
    } catch (const std::system_error& error) {
        throw CommandError(std::string(error.what()) +
                               "; --cache names another folder, audlmd cache --clear empties this one",
                           ExitStatus::failed);
    }
}

} // namespace audlmd::command
