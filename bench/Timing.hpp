#pragma once

#include <algorithm>
#include <chrono>
#include <vector>

namespace Bench {

/// How long one thing took, over all of its repetitions.
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

} // namespace Bench
