#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Test {

/// What the host sees while it loads the library, and what it answers.
struct LoadLog {
    /// Called for every picture format that is announced.
    std::function<void(std::uint32_t number)> onFormat;
    std::int64_t announcedFormats = 0;
    std::vector<std::pair<std::string, double>> settingsRead;
    std::optional<double> speedLimitSetting;

    static LoadLog& get();
};

} // namespace Test
