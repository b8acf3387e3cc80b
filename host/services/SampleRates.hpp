#pragma once

namespace audlmd {

// The sample rates, in samples per second, of every file that is opened, of every output and of every option.
// The highest is the fastest of sound cards; a file that states more is damaged, or made to take memory.
/// \snippet services.cpp rates
inline constexpr int lowestSampleRate = 1000;
inline constexpr int highestSampleRate = 768000;

} // namespace audlmd
