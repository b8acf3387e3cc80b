#include "host/words/Text.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/cache/DecodingOptions.hpp"

#include <CLI/CLI.hpp>

#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string>

namespace audlmd::command {
namespace {

constexpr const char* cacheHelp =
    R"(What libsndfile does not read, such as film containers (mov, mp4, mxf, mkv, avi) and AAC, is decoded by the
program ffmpeg, once, into a file of 32-bit floats in the cache. It is decoded again when its size or time
changes. What was used least recently is removed where the cache grows beyond the setting
DecodedCacheGigabytes (32), but nothing that a command is using.

EXAMPLES
  audlmd cache
  audlmd cache --clear
  AUDLMD_DecodedCacheGigabytes=100 audlmd mix film.otio -o film.wav)";

struct CacheOptions {
    DecodingOptions decoding;
    bool clear = false;
};

std::string sizeText(std::uintmax_t bytes) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3f GB", static_cast<double>(bytes) / 1e9);
    return text.data();
}

std::string timeText(std::chrono::system_clock::time_point time) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm local{};
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", localtime_r(&seconds, &local));
    return text.data();
}

void list(const CacheOptions& options) {
    std::uintmax_t total = 0;
    const std::vector<DecodedMedium> contents = options.decoding.cache().contents();
    for (const DecodedMedium& medium : contents) {
        const std::string name = medium.medium.empty()
                                     ? "(not whole)"
                                     : words::printable(medium.medium.string(), std::string::npos);
        std::printf("%s  %10s  %s, stream %d\n", timeText(medium.used).c_str(),
                    sizeText(medium.bytes).c_str(), name.c_str(), medium.stream + 1);
        total += medium.bytes;
    }
    std::printf("%s, %s of at most %s, in '%s'\n", words::counted(contents.size(), "file").c_str(),
                sizeText(total).c_str(), sizeText(DecodingOptions::limit()).c_str(),
                words::printable(options.decoding.folder.string(), std::string::npos).c_str());
}

void run(const CacheOptions& options) {
    if (!options.clear)
        return list(options);
    const std::size_t removed = options.decoding.cache().clear();
    const std::size_t left = options.decoding.cache().contents().size();
    std::printf("removed %s%s\n", words::counted(removed, "file").c_str(),
                left == 0 ? "" : (", kept " + std::to_string(left) + " in use").c_str());
}

} // namespace

void addCacheCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand("cache", "List what was decoded of films, or clear it");
    const auto options = std::make_shared<CacheOptions>();
    options->decoding.declareCache(*command, "Options");
    command->add_flag("--clear", options->clear, "Remove all that no command is using");
    command->footer(cacheHelp);
    command->callback([options] { run(*options); });
}

} // namespace audlmd::command
