#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/mix/TimelineInput.hpp"
#include "tools/audlmd/play/InputPlayer.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <new>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace audlmd::command {
namespace {

/// The inputs, one after another.
class InputQueue {
public:
    explicit InputQueue(const PlayOptions& options) : options_(options), files_(options.inputs.size()) {}

    /// Finds out what opens an only input, so that a wrong one is told before a device is looked for.
    void openOnly() {
        if (files_.size() == 1)
            open(0);
    }

    /// Plays each input, also after one that has failed. Throws CommandError where one has, with the status
    /// of the first.
    void play(PlaySession& session) {
        Turn last = Turn::next;
        for (std::size_t n = 0; n < files_.size() && last != Turn::quit;) {
            // What cannot be opened is passed over, in the direction of the last turn.
            Turn turn = n == 0 ? Turn::next : last;
            if (files_.size() == 1) {
                play(session, n, turn);
            } else {
                try {
                    play(session, n, turn);
                } catch (const std::bad_alloc&) {
                    throw;
                } catch (...) {
                    note(n, currentFailure());
                }
            }
            last = turn;
            n = turn == Turn::next ? n + 1 : n - std::min<std::size_t>(n, 1);
        }
        if (failed_)
            throw CommandError(std::to_string(failures_.size()) + " of " +
                                   words::counted(files_.size(), "input") + " failed, see above",
                               *failed_);
    }

private:
    void play(PlaySession& session, std::size_t n, Turn& turn) {
        const std::filesystem::path& name = options_.inputs[n];
        open(n);
        PlayInput input(options_, name, *files_[n]);
        if (files_.size() > 1)
            std::printf("%s (%zu of %zu)\n", words::printable(name.string()).c_str(), n + 1, files_.size());
        InputPlayer player(session, input, n == 0, n + 1 == files_.size());
        turn = player.play();
        if (session.terminal != nullptr)
            session.terminal->restore();
        player.tell();
    }

    /// Once: a stream can be read once, and is perhaps played twice.
    void open(std::size_t n) {
        const std::filesystem::path& name = options_.inputs[n];
        if (!files_[n])
            files_[n] = isTimelineFile(name) ? PlayableFile{.path = name} : options_.atHand(name);
    }

    /// Of a failure that the next input has no part in. Throws any other.
    void note(std::size_t n, const CommandError& failure) {
        if (failure.status() != ExitStatus::input && failure.status() != ExitStatus::incomplete)
            throw failure;
        std::fflush(stdout);
        printError(failure.what());
        failures_.insert(n);
        failed_ = failed_.value_or(failure.status());
    }

    const PlayOptions& options_;
    /// What opens each input, once that is known.
    std::vector<std::optional<PlayableFile>> files_;
    std::set<std::size_t> failures_;
    std::optional<ExitStatus> failed_;
};

void play(const PlayOptions& options) {
    options.requireCompatible();
    InputQueue inputs(options);
    if (!options.listDevices)
        inputs.openOnly();
    const SoundDevices devices;
    if (options.listDevices) {
        devices.find(std::nullopt); // Throws where there is none.
        std::fputs(devices.list().c_str(), stdout);
        return;
    }
    if (options.changesConverter())
        std::printf("note: --speed: %g is beyond the band-limited converter, so the linear one plays\n",
                    options.strip.speed->factor);
    JobControl jobs;
    std::optional<KeyTerminal> terminal;
    if (KeyTerminal::isThere())
        terminal.emplace();
    PlaySession session{.options = options,
                        .devices = devices,
                        .device = devices.find(options.device),
                        .jobs = jobs,
                        .terminal = terminal ? &*terminal : nullptr};
    inputs.play(session);
}

} // namespace

void addPlayCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand("play", "Play sound files and timelines, with keys to shuttle");
    const auto options = std::make_shared<PlayOptions>();
    options->declare(*command);
    command->callback([options] { play(*options); });
}

} // namespace audlmd::command
