#include "tools/audlmd/Explain.hpp"

#include "loop_modes/RegistrationOrder.hpp"
#include "tools/audlmd/ModeText.hpp"

#include <iomanip>
#include <sstream>

namespace audlmd::command {

std::string explain(const StripPlayer& player, FormatId format, bool summing) {
    const unsigned long code = player.modeCode();
    std::ostringstream text;
    text << "mode code " << code << " (0x" << std::hex << std::setw(3) << std::setfill('0') << code
         << std::dec << std::setfill(' ') << "), registered as number " << registrationPlace(code) + 1
         << " of " << Aud::Render::validModeCount << '\n'
         << describeFields(Aud::Render::decodeModeCode(code)) << "chain, outermost first\n";
    for (const std::string& layer : chainLayers(code))
        text << "  " << layer << '\n';
    if (player.fullLevelModeCode() != code)
        text << "at full level, without the envelope: mode code " << player.fullLevelModeCode() << '\n';
    text << "output type " << outputTypeIndex(format, summing) + 1 << " of " << Aud::Render::outputTypeCount
         << " in the registration order: " << outputTypeName(format, summing) << '\n'
         << "record\n";
    for (const RecordNumber& number : player.recordNumbers())
        text << "  " << std::left << std::setw(32) << number.name << ' ' << number.value << '\n';
    text << "output length " << player.outputLength() << " samples\n";
    return text.str();
}

} // namespace audlmd::command
