#pragma once

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace audlmd::bench {

/// The durations of one piece of work, over all of its repetitions, in nanoseconds.
class Timing {
public:
    template <class Work>
    void repeat(Work work) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double, std::nano> time = std::chrono::steady_clock::now() - start;
        nanoseconds_.push_back(time.count());
    }

    double minimum() const { return *std::min_element(nanoseconds_.begin(), nanoseconds_.end()); }
    double median() const {
        std::vector<double> sorted = nanoseconds_;
        std::sort(sorted.begin(), sorted.end());
        return sorted[sorted.size() / 2];
    }

private:
    std::vector<double> nanoseconds_;
};

/// The least and the median duration beside those of the yardstick, all divided by `unit`: the samples or
/// calls of one repetition.
inline nlohmann::json figures(const Timing& timing, const Timing& yardstick, double unit) {
    return {{"minimum", timing.minimum() / unit},
            {"median", timing.median() / unit},
            {"floorMinimum", yardstick.minimum() / unit},
            {"floorMedian", yardstick.median() / unit}};
}

/// Overwrites one line on a terminal; writes nothing where standard error is no terminal.
void showProgress(const std::string& what, std::size_t done, std::size_t all);

/// Prints the rows as a table on standard output, and writes them as JSON into `jsonFile`. Where the name is
/// empty there is no file; where it is "-", the JSON goes to standard output instead of the table. Throws
/// std::runtime_error where the file cannot be written.
void report(const nlohmann::json& rows, const std::string& jsonFile);

} // namespace audlmd::bench
