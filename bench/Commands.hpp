#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace audlmd::bench {

/// The functions that a command measures, and how often.
struct Selection {
    /// All valid codes where empty.
    std::vector<unsigned int> codes;
    /// Indices of the order of registration; all fourteen where empty.
    std::vector<std::size_t> outputTypes;
    /// In source samples per output sample, for the modes with a conversion.
    std::vector<double> speeds{1.0};
    unsigned int samples = 2048;
    /// Each round measures everything; in a round, each function takes `repetitions` turns with its floor.
    unsigned int rounds = 3;
    unsigned int repetitions = 5;
    /// The file for the figures as JSON. Empty: no file; "-": standard output, instead of the table.
    std::string json;
};

/// Nanoseconds per output sample of render functions, each beside its floor. Returns the exit status, which
/// is 1 where a function's output differs from the model's; nothing is measured then.
int measureModes(const Selection& selection);

/// Nanoseconds per call of 0 and of 64 samples, in the modes without conversion, beside the same chain built
/// by hand (and, for the 64 samples, the floor of the mode).
int measureCalls(const Selection& selection);

} // namespace audlmd::bench
