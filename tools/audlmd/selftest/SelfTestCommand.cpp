#include "host/signal/VectorWidth.hpp"
#include "host/words/Text.hpp"
#include "loop_modes/RenderFunction.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/selftest/SelfTest.hpp"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <array>
#include <cinttypes>
#include <cstdio>
#include <memory>
#include <string>

namespace audlmd::command {
namespace {

constexpr const char* selfTestHelp =
    R"(Renders a fixed set of jobs, and compares the bytes with those of the release: machines that pass render one
programme in parts. The jobs need no files and take a few seconds.

EXAMPLES
  audlmd selftest
  audlmd selftest --json | jq -r .job
  AUDLMD_VectorBits=0 audlmd selftest
  srun -N 8 audlmd selftest)";

std::string hexadecimal(std::uint64_t number) {
    std::array<char, 17> text{};
    std::snprintf(text.data(), text.size(), "%016" PRIx64, number);
    return text.data();
}

} // namespace

void runSelfTest(const std::vector<SelfTestJob>& jobs, bool json) {
    std::size_t different = 0;
    if (!json)
        std::printf("audlmd %s, processor %s, vectors of %d bits\n\n%-38s  %-16s  found\n",
                    audLMDDllVersionStr(), processorLevel().c_str(), vectorBits(), "job", "expected");
    for (const SelfTestJob& job : jobs) {
        const std::uint64_t found = job.run();
        const bool isSame = found == job.expected;
        different += !isSame;
        if (json)
            std::printf("%s\n", nlohmann::json{{"job", job.name},
                                               {"expected", hexadecimal(job.expected)},
                                               {"found", hexadecimal(found)},
                                               {"same", isSame},
                                               {"processor", processorLevel()},
                                               {"vectorBits", vectorBits()}}
                                    .dump()
                                    .c_str());
        else
            std::printf("%-38s  %s  %s%s\n", job.name.c_str(), hexadecimal(job.expected).c_str(),
                        hexadecimal(found).c_str(), isSame ? "" : "  DIFFERENT");
        std::fflush(stdout);
    }
    if (different != 0)
        throw CommandError(words::counted(different, "job") + " of " + std::to_string(jobs.size()) +
                               " made other bytes than the release; do not render parts of one programme on "
                               "this machine and on others",
                           ExitStatus::failed);
    if (!json)
        std::printf("\nall %zu jobs make the bytes of the release\n", jobs.size());
}

void addSelfTestCommand(CLI::App& app) {
    CLI::App* command =
        app.add_subcommand("selftest", "Compare the bytes that this machine renders with the release's");
    const auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "Print an object a job, for programs");
    command->footer(selfTestHelp);
    command->callback([json] { runSelfTest(selfTestJobs(), *json); });
}

} // namespace audlmd::command
