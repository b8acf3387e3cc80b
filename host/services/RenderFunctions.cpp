#include "host/services/RenderFunctions.hpp"

#include "loop_modes/ModeCode.hpp"

namespace audlmd {

NoSuchMode::NoSuchMode(unsigned long code) : std::out_of_range(whyNoSuchMode(code)), code_(code) {}

/// The whole code is checked first and the single fields last, so every check may rely on the checks before.
std::string whyNoSuchMode(unsigned long code) {
    using namespace Aud::Render;
    const std::string mode = "mode code " + std::to_string(code);
    const std::string invalid = mode + " names no mode: ";
    if (isValidModeCode(code))
        return mode + " is valid, but no library that registers a render function for it is loaded, and none "
                      "is built in";
    if (code >= modeCodeLimit)
        return invalid + "the largest is " + std::to_string(largestModeCode);
    // Names the bits too, because users meet mode codes as one number.
    const auto tooLarge = [&](const char* field, const char* bits, auto value, auto largest) {
        return invalid + field + " (bits " + bits + ") is " +
               std::to_string(static_cast<unsigned int>(value)) + ", at most " +
               std::to_string(static_cast<unsigned int>(largest)) + " is possible";
    };
    // A code below the limit is invalid only if one of these three fields is.
    const ModeFields fields = decodeModeCode(code);
    if (fields.envelopeStage >= envelopeStages.size())
        return tooLarge("envelopeStage", "1 to 4", fields.envelopeStage, envelopeStages.size() - 1);
    if (fields.srcStage > ConversionStage::filtering)
        return tooLarge("srcStage", "5 and 6", fields.srcStage, ConversionStage::filtering);
    return tooLarge("levelStage", "8 and 9", fields.levelStage, LevelStage::fixed);
}

} // namespace audlmd
