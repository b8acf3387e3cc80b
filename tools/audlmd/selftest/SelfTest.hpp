#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace audlmd::command {

/// A job whose bytes are known.
struct SelfTestJob {
    std::string name;
    /// 64-bit FNV-1a of the bytes (G. Fowler, L. C. Noll, K.-P. Vo), as released.
    std::uint64_t expected = 0;
    /// Does the job, and returns what this machine makes of it.
    std::function<std::uint64_t()> run;
};

/// Every chain compiled in, most chains through the library's tables in every output type, rate conversion,
/// delivery with each rounding, a mix, and its loudness. The material is noise of whole numbers, so that the
/// jobs need no files. Together they take a few seconds.
///
/// A difference means another processor, library or compiler, not necessarily another sound: say what differs
/// before you mix parts of one programme on several machines.
std::vector<SelfTestJob> selfTestJobs();

/// Does the jobs, and prints a line for each, or an object for programs. Throws CommandError if one of them
/// makes other bytes than expected.
void runSelfTest(const std::vector<SelfTestJob>& jobs, bool json);

/// Which of the levels of x86-64 (v1 to v4) the processor has, or that it is another one.
std::string processorLevel();

} // namespace audlmd::command
