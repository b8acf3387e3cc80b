#include "tools/audlmd/mix/Watching.hpp"

#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/JobLog.hpp"
#include "tools/audlmd/files/FileWatch.hpp"
#include "tools/audlmd/files/OutputPath.hpp"

#include <chrono>
#include <cstdio>
#include <new>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace audlmd::command {
namespace {

/// Empty: nothing failed.
std::optional<CommandError> failureIn(const std::function<void()>& round) {
    try {
        round();
        return std::nullopt;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {
        return currentFailure();
    }
}

void prepare(const MixOptions& options, FileWatch& watch) {
    std::vector<std::filesystem::path> outputs{options.report, options.picture, options.page, options.markers,
                                               options.peaks.file};
    outputs.insert(outputs.end(), options.outputs.begin(), options.outputs.end());
    for (const std::filesystem::path& output : outputs) {
        if (output.empty())
            continue;
        const OutputPath target(output);
        if (target.isStream)
            throw CommandError("--watch writes again and again, and '" + output.string() +
                               "' is no file: name one");
        watch.ignore(target.path);
    }
    for (const std::filesystem::path& input : options.inputs) {
        if (std::error_code none;
            std::filesystem::exists(input, none) && !std::filesystem::is_regular_file(input, none))
            throw CommandError("--watch reads again and again, and '" + input.string() +
                               "' is no file: name one");
        watch.add(input);
    }
    for (const std::filesystem::path& folder : options.media)
        watch.addFolder(folder);
}

/// "'a.wav' and 2 more have changed: "; empty for the first round.
std::string reasonOf(const std::set<std::string>& changed) {
    if (changed.empty())
        return "";
    const std::string more =
        changed.size() == 1 ? " has" : " and " + std::to_string(changed.size() - 1) + " more have";
    return "'" + words::printable(*changed.begin()) + "'" + more + " changed: ";
}

} // namespace

void watchAndMix(
    const MixOptions& options,
    const std::function<void(const std::function<void(const std::filesystem::path&)>& looksAt)>& mix) {
    using Clock = std::chrono::steady_clock;
    FileWatch watch;
    prepare(options, watch);
    const JobLog log(stdout, options.style, options.inputs.front().string());
    std::optional<CommandError> failure;
    std::optional<std::set<std::string>> changed = std::set<std::string>();
    for (; changed; changed = watch.wait()) {
        const Clock::time_point start = Clock::now();
        failure = failureIn([&] { mix([&](const std::filesystem::path& file) { watch.add(file); }); });
        if (failure)
            printError(failure->what());
        const bool isWritten = !failure || failure->status() == ExitStatus::incomplete;
        char seconds[32];
        std::snprintf(seconds, sizeof seconds, "%.3f s",
                      std::chrono::duration<double>(Clock::now() - start).count());
        if (!options.style.quiet)
            log.note(reasonOf(*changed) + (isWritten ? "done in " : "failed after ") + seconds +
                     "; waiting for the next change, Ctrl-C ends");
        std::fflush(stdout);
    }
    if (failure)
        throw CommandError("the last round did not end well, see above", failure->status());
}

} // namespace audlmd::command
