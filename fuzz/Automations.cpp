#include "contract/DynamicLevel.hpp"
#include "fuzz/Fuzzing.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/options/AutomationFile.hpp"

#include <vector>

namespace audlmd::fuzz {
namespace {

using State = Aud::DynamicLevelControl::DynamicLevelApplyingIteratorState;

/// The level where a walk stands, and that it moves on or stays for good.
void requireLevel(const Automation& automation, std::int64_t position, DynamicLevelDirection direction) {
    State state;
    automation.place(state, position, direction);
    const float level = automation.uValueAt(position);
    require(level >= 0.0F && level <= 1.5F, "a level lies on the curve");
    require(state.uValue == level, "a walk starts at the level of its position");
    require(state.stationary != 0 || state.samplesToNextNode != 0, "a walk moves on, or stays for good");
    const double steps = state.stationary != 0 ? 0.0 : static_cast<double>(state.samplesToNextNode);
    const double end = static_cast<double>(level) + steps * static_cast<double>(state.uValueStep);
    require(end > -1e-3 && end < 1.501, "a piece ends on the curve");
}

void requireLevels(const std::vector<command::AutomationPoint>& points, int sampleRate, double speed) {
    try {
        const Automation automation(command::levelNodes(points, sampleRate, speed));
        for (const LevelNode& node : automation.nodes())
            for (const std::int64_t position : {node.position - 1, node.position, node.position + 1}) {
                requireLevel(automation, position, DynamicLevelDirection::forwards);
                requireLevel(automation, position, DynamicLevelDirection::reverse);
            }
    } catch (const command::CommandError& error) {
        requireOneLine(error.what());
    }
}

/// Files of an automation. A file is read or refused with one line, at any sample rate and speed; each level
/// lies on the curve, and walks in both directions agree on it.
void read(std::span<const std::uint8_t> bytes) {
    static FileInMemory file;
    file.hold(bytes);
    try {
        const std::vector<command::AutomationPoint> points = command::readAutomationFile(file.path());
        requireLevels(points, 48000, 1.0);
        requireLevels(points, 1000, 1e-6);
        requireLevels(points, 768000, 1e6);
    } catch (const command::CommandError& error) {
        requireOneLine(error.what());
    }
}

} // namespace
} // namespace audlmd::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    audlmd::fuzz::read({bytes, size});
    return 0;
}
