#include "tools/audlmd/options/Time.hpp"

#include "tools/audlmd/CommandError.hpp"

#include <cmath>

namespace audlmd::command {

TimeValue TimeValue::parse(std::string_view text, std::string_view option) {
    TimeValue value;
    value.text_ = text;
    value.option_ = option;
    const std::optional<words::WrittenTime> time = words::timeIn(text);
    if (!time)
        throw CommandError(value.option_ + ": '" + value.text_ + "' is not a time; write " +
                           words::timeSyntax);
    value.time_ = *time;
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

} // namespace audlmd::command
