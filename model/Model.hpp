#pragma once

#include "loop_modes/IteratorCreationParams.hpp"
#include "model/Host.hpp"

#include <cstddef>
#include <cstdint>
#include <vector>

/// The contract, run slowly: a second account of what the library does, written from the description of each
/// stage and never from the stage's template. Tests and benchmarks compare the library with it.
namespace audlmd::model {

/// What the model throws where the library throws Orv::Exception::RuntimeError.
struct RuntimeError {
    const char* message;
    int line;
};

/// Renders as the library must: every stage is decided on for every sample, and every host operation goes to
/// `host` in the order of the contract. Moves `position` past every sample written, also when it throws:
/// RuntimeError, or what an operation of `host` throws.
void render(unsigned int code, std::size_t outputType, const Aud::Render::IteratorCreationParams& params,
            Host& host, std::uint8_t*& position, unsigned int count);

/// The digits of a mode code.
struct Digits {
    explicit Digits(unsigned int code)
        : direction(code / 1024 % 2), level(code / 256 % 4), filter(code / 128 % 2),
          conversion(code / 32 % 4), middle(code / 2 % 16), levelDirection(code % 2) {}

    unsigned int direction, level, filter, conversion, middle, levelDirection;
};

/// Whether a code names a chain, by its digits.
bool isValid(unsigned int code);
/// All valid codes in the order of registration.
const std::vector<unsigned int>& registrationOrder();

/// The seven sample formats, in the order of the output types.
enum class Format { f32, s16, s24, s8, u8, s24in32, s32 };

inline constexpr std::size_t containerBytes[7] = {4, 2, 3, 1, 1, 4, 4};

/// Writes the container of a sample. For u8 the caller has added the offset of 1.0.
void store(Format format, float x, std::uint8_t* container);
float load(Format format, const std::uint8_t* container);
/// Stores the sample as an output type does, or adds it: the last seven of the fourteen sum.
void deliver(std::size_t outputType, float x, std::uint8_t* container);

} // namespace audlmd::model
