#include "host/services/RenderFunctions.hpp"
#include "host/words/Numbers.hpp"
#include "loop_modes/RegistrationOrder.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/files/OutputFormat.hpp"
#include "tools/audlmd/modes/ModeText.hpp"
#include "tools/audlmd/options/ParsedOption.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <memory>

namespace audlmd::command {
namespace {

/// Reads a code in decimal or hexadecimal, valid or not. Throws CommandError.
unsigned long parseCode(std::string_view text, std::string_view /*option*/) {
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    const std::string_view digits = text.substr(hexadecimal ? 2 : 0);
    if (const auto code = words::wholeIn<unsigned long>(digits, hexadecimal ? 16 : 10))
        return *code;
    throw CommandError("'" + std::string(text) + "' is not a mode code; write it as 1603 or 0x643");
}

/// In how many of the fourteen despatch tables the code has a render function.
std::size_t tablesHolding(unsigned long code) {
    std::size_t tables = 0;
    for (const OutputFormat& format : outputFormats)
        for (const bool summing : {false, true})
            withOutputType(format.id, summing, [&]<class Out>(std::type_identity<Out>) {
                tables += findRenderFunction<Out>(code) != nullptr;
            });
    return tables;
}

void listModes() {
    auto codes = Aud::Render::registrationOrder;
    std::ranges::sort(codes);
    for (const unsigned long code : codes)
        std::printf("%4lu  0x%03lx  %s\n", code, code, chainType(code).c_str());
}

void decodeMode(unsigned long code) {
    if (!Aud::Render::isValidModeCode(code))
        throw CommandError(whyNoSuchMode(code));
    std::printf("mode code %lu (0x%03lx)\n%schain     %s\n", code, code,
                describeFields(Aud::Render::decodeModeCode(code)).c_str(), chainType(code).c_str());
    if (Aud::Render::isTwinOfEvenCode(code))
        std::printf("          the same chain as code %lu\n", code - 1);
    std::printf("registered as number %zu of %zu, for %zu of %zu output types\n", registrationPlace(code) + 1,
                Aud::Render::validModeCount, tablesHolding(code), Aud::Render::outputTypeCount);
}

} // namespace

void addModesCommand(CLI::App& app) {
    CLI::App* modes = app.add_subcommand("modes", "List the mode codes with their chains, or decode one");
    modes->footer("Examples:\n"
                  "  audlmd modes          all 864 codes, each with its chain, outermost layer first\n"
                  "  audlmd modes 1603     the fields of one code\n"
                  "  audlmd modes 0x643    the same code\n"
                  "  audlmd modes 24       says why no chain has this code");
    const auto code = std::make_shared<std::optional<unsigned long>>();
    addParsed(*modes, "CODE", *code, &parseCode, "Decode this code, decimal or hexadecimal (0x...)");
    modes->callback([code] { *code ? decodeMode(**code) : listModes(); });
}

} // namespace audlmd::command
