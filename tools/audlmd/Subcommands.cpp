#include "tools/audlmd/Subcommands.hpp"

#include "loop_modes/RenderFunction.hpp"

#include <CLI/CLI.hpp>

namespace audlmd::command {
namespace {

constexpr const char* statusHelp =
    R"(EXIT STATUS
  0  done as asked
  1  the machine failed: no memory, no thread
  2  the command line cannot be understood, or asks for what cannot be
  3  an input is not there, damaged, or of the wrong kind
  4  the output is written, but something that should sound is silent
  5  the output, or the sound device, cannot be written
A signal, such as Ctrl-C, ends the command as signals do (a shell shows 130); nothing unfinished is left.)";

} // namespace

void declareCommand(CLI::App& app) {
    app.name("audlmd");
    app.description("Renders audio through the render functions of libaudlmd.");
    app.set_version_flag("--version", audLMDDllVersionStr());
    app.require_subcommand(1);
    app.failure_message(CLI::FailureMessage::simple);
    app.footer(statusHelp);
    addRenderCommand(app);
    addInfoCommand(app);
    addModesCommand(app);
    addPlotCommand(app);
    addMixCommand(app);
    addJoinCommand(app);
    addPlayCommand(app);
    addCacheCommand(app);
    addSelfTestCommand(app);
}

} // namespace audlmd::command
