#include "tools/audlmd/OverloadText.hpp"

#include "host/signal/GainLaws.hpp"
#include "host/words/Text.hpp"
#include "host/words/Times.hpp"

#include <iomanip>
#include <sstream>

namespace audlmd::command {

std::string overloadText(const Overload& overload, int sampleRate) {
    std::ostringstream text;
    text << words::counted(overload.samples, "sample");
    if (overload.peak > 0.0F)
        text << ", by up to " << std::fixed << std::setprecision(2)
             << decibelsOfGain(static_cast<double>(overload.peak)) << " dB";
    text << ", first at " << words::clock(overload.firstAt.number(), sampleRate);
    return text.str();
}

std::string channelOverloadLine(const char* what, std::size_t channel, const Overload& overload,
                                int sampleRate) {
    if (overload.samples == 0)
        return {};
    return what + (": channel " + std::to_string(channel + 1)) + ": " + overloadText(overload, sampleRate) +
           "\n";
}

} // namespace audlmd::command
