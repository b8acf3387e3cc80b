// `audlmd modes`, `audlmd --version` and --help.

#include "loop_modes/ChainLayers.hpp"
#include "loop_modes/RegistrationOrder.hpp"
#include "tests/tools/audlmd/CommandFixture.hpp"

#include <cstdio>
#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <regex>
#include <typeinfo>
#include <utility>

namespace audlmd::test {
namespace {

/// The types of the chains by their codes, as the linker knows them. Naming a pointer to a chain instantiates
/// no layer.
template <std::size_t... Place>
std::map<unsigned long, const char*> compiledChains(std::index_sequence<Place...> /*places*/) {
    using Aud::Render::registrationOrder;
    return {{registrationOrder[Place], typeid(Aud::Render::Chain<registrationOrder[Place]>*).name()}...};
}

/// A type as the compiler writes it, without the namespaces Aud and Aud::Render.
std::string readable(const char* mangled) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(mangled, nullptr, nullptr, &status), &std::free);
    static const std::regex noise(R"(Aud::(Render::)?|\(Aud::GainCurve::eCurveType\)|\*$| (?=>))");
    return std::regex_replace(name.get(), noise, "");
}

class Modes : public CommandFixture {};

TEST_F(Modes, AreListedWithTheChainsThatTheCompilerMakes) {
    std::string expected;
    char number[32];
    for (const auto& [code, chain] :
         compiledChains(std::make_index_sequence<Aud::Render::validModeCount>())) {
        std::snprintf(number, sizeof number, "%4lu  0x%03lx  ", code, code);
        expected += number + readable(chain) + '\n';
    }
    EXPECT_EQ(output("modes"), expected);
}

TEST_F(Modes, AreDecodedInEitherNotation) {
    const std::string mode = output("modes 1603");
    for (const char* part :
         {"mode code 1603 (0x643)", "levelStage             2", "srcStage               2",
          "envelopeStage          1", "the same chain as code 1602", "for 14 of 14 output types"})
        EXPECT_NE(mode.find(part), std::string::npos) << part << "\nin\n" << mode;
    EXPECT_EQ(output("modes 0x643"), mode);
}

TEST_F(Modes, SayWhyACodeIsNotValid) {
    expectRefused("modes 24", "envelopeStage");
    expectRefused("modes 0x300", "levelStage");
    for (const std::string code : {"96", "1752", "99999999999999999999", "-1", "0x", "seven"})
        expectRefused("modes " + code, code);
}

TEST_F(Modes, StandBesideTheVersionAndTheHelp) {
    EXPECT_EQ(output("--version"), AUDLMD_VERSION "\n");
    EXPECT_NE(output("render --help").find("--automation-reverse"), std::string::npos);
}

} // namespace
} // namespace audlmd::test
