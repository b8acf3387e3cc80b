#pragma once

#include <compare>
#include <cstdint>

namespace audlmd {

/// Pull-up and pull-down: material is taken at another rate than its file says, faster or slower with its
/// pitch, as film at 24 frames per second is that runs at 25. By itself it changes nothing.
///
/// Times of such material, its length and its time reference count at the rate that it is taken at.
/// \snippet timeline.cpp relabel
struct Relabel {
    /// What is `from` in the file is taken for `to`. Above 0, without a common factor.
    std::int64_t from = 1;
    std::int64_t to = 1;

    /// The rate at which a file's rate is taken, both in samples per second.
    double rateOf(double rate) const { return rate * static_cast<double>(to) / static_cast<double>(from); }

    friend auto operator<=>(const Relabel& a, const Relabel& b) = default;
};

} // namespace audlmd
