#pragma once

#include "host/media/DecodedCache.hpp"
#include "tools/audlmd/JobLog.hpp"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace audlmd::command {

/// The options on inputs that libsndfile does not read, which ffmpeg decodes into a cache. Every command that
/// opens sound files asks here which file to open.
struct DecodingOptions {
    /// Of the cache.
    std::filesystem::path folder = DecodedCacheOptions::defaultFolder();
    /// Of the input's streams with sound, counted from 1.
    std::optional<int> stream;

    /// --cache. This object must outlive the app.
    void declareCache(CLI::App& app, const std::string& group);
    /// --stream.
    void declareStream(CLI::App& app, const std::string& group);

    /// The file to open for an input, see DecodedCache, with a note that names the input. Shows the progress
    /// of decoding on a terminal, where the style is neither quiet nor for programs. Throws SoundFileError,
    /// and CommandError where the cache cannot be written.
    PlayableFile playable(const std::filesystem::path& input, std::optional<int> ofStream,
                          const JobStyle& style) const;

    /// The same cache at every call, so that what has been decoded stays in it.
    DecodedCache& cache() const;
    /// In bytes. The setting DecodedCacheGigabytes.
    static std::uintmax_t limit();

private:
    mutable std::shared_ptr<DecodedCache> cache_;
    mutable bool isShown_ = true;
};

} // namespace audlmd::command
