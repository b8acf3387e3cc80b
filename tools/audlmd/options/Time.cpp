#include "tools/audlmd/options/Time.hpp"

#include "host/words/Numbers.hpp"
#include "tools/audlmd/CommandError.hpp"

#include <cmath>

namespace audlmd::command {

TimeValue TimeValue::parse(std::string_view text, std::string_view option) {
    TimeValue value = parseMoment(text, option);
    if (value.isName_ || value.countsFromEnd_)
        throw CommandError(value.option_ + ": '" + value.text_ + "' is not a time; write " +
                           words::timeSyntax);
    return value;
}

TimeValue TimeValue::parseMoment(std::string_view text, std::string_view option) {
    const bool fromEnd = text.starts_with('-');
    const std::optional<words::WrittenTime> time = words::timeIn(text.substr(fromEnd ? 1 : 0));
    TimeValue value;
    value.text_ = text;
    value.option_ = option;
    value.time_ = time.value_or(words::WrittenTime());
    value.isName_ = !time;
    value.countsFromEnd_ = time && fromEnd;
    return value;
}

std::int64_t TimeValue::samples(int sampleRate) const {
    if (time_.samples)
        return *time_.samples;
    const double count = std::round(time_.seconds * sampleRate);
    if (!(count < 0x1p62))
        throw CommandError(option_ + ": " + text_ + " is more samples than can be counted");
    return static_cast<std::int64_t>(count);
}

std::string TimeValue::inThisUnit(std::int64_t samples, int sampleRate) const {
    const double seconds = static_cast<double>(samples) / sampleRate;
    if (time_.samples)
        return std::to_string(samples) + "smp";
    if (text_.ends_with("ms"))
        return words::numberText(seconds * 1000.0) + "ms";
    return text_.find(':') == std::string::npos ? words::numberText(seconds) + "s"
                                                : words::clock(samples, sampleRate);
}

} // namespace audlmd::command
