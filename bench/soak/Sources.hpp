#pragma once

#include "host/mix/Media.hpp"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace audlmd::soak {

/// Of every medium, in samples.
inline constexpr std::int64_t mediumLength = 20 * 48000;

/// Two channels of tones, at 0.7 of full scale and 48 kHz. "fast" is in memory; a read of "slow" takes up to
/// 20 ms; every eighth read of "failing" throws, half of them something that is no std::exception. Any other
/// name is refused with std::runtime_error. The samples are made once, and read by all.
Media openMedium(const std::string& name);

/// Runs tasks side by side, each with its number. Throws what a task throws. Aborts the process where they do
/// not end within two minutes: somebody was not woken, and a debugger can tell who.
void runTogether(std::size_t tasks, const std::function<void(std::size_t)>& task);

} // namespace audlmd::soak
