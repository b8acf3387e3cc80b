#pragma once

#include <vector>

namespace Test {

/// The digits of a mode code.
struct Digits {
    explicit Digits(unsigned int code)
        : direction(code / 1024 % 2), level(code / 256 % 4), filter(code / 128 % 2),
          conversion(code / 32 % 4), middle(code / 2 % 16), levelDirection(code % 2) {}

    unsigned int direction, level, filter, conversion, middle, levelDirection;
};

/// Whether a code names a chain, by its digits.
bool modelIsValid(unsigned int code);
/// All valid codes in the order of registration.
const std::vector<unsigned int>& modelRegistrationOrder();

} // namespace Test
