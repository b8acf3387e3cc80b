#pragma once

#include <cstddef>
#include <cstdint>

namespace Test {

/// The seven formats, in the order of the output types.
enum class ModelFormat { f32, s16, s24, s8, u8, s24in32, s32 };

inline constexpr std::size_t containerBytes[7] = {4, 2, 3, 1, 1, 4, 4};

/// Converts a sample and writes its container. For U8 the caller adds the offset of 1.0.
void modelStore(ModelFormat format, float x, std::uint8_t* container);
float modelLoad(ModelFormat format, const std::uint8_t* container);
/// What an output type does with a sample: its number among the fourteen decides whether it sums.
void modelDeliver(std::size_t outputType, float x, std::uint8_t* container);

} // namespace Test
