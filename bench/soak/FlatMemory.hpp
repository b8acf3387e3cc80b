#pragma once

#include <cstddef>
#include <vector>

namespace audlmd::soak {

/// The memory of the process as the system sees it (resident set), noted again and again.
class FlatMemory {
public:
    void note();
    /// The largest note, in MiB. There must be one.
    double largest() const;
    /// Whether there are enough notes to judge.
    bool isEnough() const;
    /// Throws std::runtime_error where the last quarter of the notes has more than the second one, beyond a
    /// half and 8 MiB. The first quarter does not count: there caches and pools fill up. Trap: too few notes
    /// are not judged.
    void requireFlat() const;

private:
    /// The largest note of a quarter, 0 to 3.
    double largestOfQuarter(std::size_t quarter) const;

    /// In MiB.
    std::vector<double> notes_;
};

} // namespace audlmd::soak
