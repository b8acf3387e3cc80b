#include "bench/soak/FlatMemory.hpp"

#include <algorithm>
#include <fstream>
#include <malloc.h>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace audlmd::soak {

void FlatMemory::note() {
    // Else each thread's free memory counts as well, which grows for a while.
    malloc_trim(0);
    double pages = 0.0;
    double residentPages = 0.0;
    std::ifstream("/proc/self/statm") >> pages >> residentPages;
    notes_.push_back(residentPages * static_cast<double>(sysconf(_SC_PAGESIZE)) / 0x1p20);
}

double FlatMemory::largestOfQuarter(std::size_t quarter) const {
    const auto at = [&](std::size_t part) {
        return notes_.begin() + static_cast<std::ptrdiff_t>(part * notes_.size() / 4);
    };
    return *std::max_element(at(quarter), at(quarter + 1));
}

double FlatMemory::largest() const {
    return *std::ranges::max_element(notes_);
}

bool FlatMemory::isEnough() const {
    return notes_.size() >= 8;
}

void FlatMemory::requireFlat() const {
    if (!isEnough())
        return;
    const double before = largestOfQuarter(1);
    const double now = largestOfQuarter(3);
    if (now > 1.5 * before + 8.0)
        throw std::runtime_error("memory grows: from " + std::to_string(before) + " MiB to " +
                                 std::to_string(now) + " MiB");
}

} // namespace audlmd::soak
