#include "fuzz/Fuzzing.hpp"
#include "host/signal/StripPlan.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/options/StripOptions.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <vector>

namespace audlmd::fuzz {
namespace {

/// Each line is a word of the command line; the last word comes first, as CLI11 has it.
std::vector<std::string> wordsIn(std::string_view text) {
    std::vector<std::string> words;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        words.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    std::ranges::reverse(words);
    return words;
}

/// The plan of a strip is made, or refused with one line.
void requirePlan(const command::StripOptions& options, std::int64_t frames, int sampleRate) {
    try {
        const StripPlan plan(options
                                 .settingsFor({.path = "in.wav",
                                               .frames = frames,
                                               .sampleRate = sampleRate,
                                               .markers = {{.position = 1000, .name = "verse"},
                                                           {.position = -5, .name = "end"}}})
                                 .settings);
        require(plan.outputLength > 0, "a strip has samples");
    } catch (const command::CommandError& error) {
        requireOneLine(error.what());
    } catch (const std::invalid_argument& error) {
        requireOneLine(error.what());
    }
}

/// The options of a strip as a command line, a word on each line. A command line is read or refused with a
/// message; what was read makes the plan of a strip of any input, or is refused with one line.
void read(std::string_view text) {
    CLI::App app("fuzz");
    command::StripOptions options;
    options.declareRange(app);
    options.declareSound(app);
    try {
        app.parse(wordsIn(text));
        options.requireCompatible();
    } catch (const CLI::Error& error) {
        require(*error.what() != '\0' || error.get_exit_code() == 0, "a message is not empty");
        return;
    } catch (const command::CommandError& error) {
        requireOneLine(error.what());
        return;
    } catch (const std::invalid_argument& error) {
        requireOneLine(error.what());
        return;
    }
    // Reading files is another target's.
    options.automation.reset();
    requirePlan(options, 480000, 48000);
    requirePlan(options, 1, 1000);
    requirePlan(options, std::numeric_limits<std::int64_t>::max(), 768000);
}

} // namespace
} // namespace audlmd::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    audlmd::fuzz::read({reinterpret_cast<const char*>(bytes), size});
    return 0;
}
