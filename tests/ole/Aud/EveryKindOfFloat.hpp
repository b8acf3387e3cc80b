#pragma once

#include "model/OutputTypes.hpp"

#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

namespace audlmd::test {

/// Every exponent and sign with 2,048 mantissas, NaNs of every kind, and the neighbours of each step of 9
/// bits and of each clip limit.
inline std::vector<float> everyKindOfFloat() {
    std::vector<float> floats{0.9921875F, 0.999969482421875F, 0.99999988079071044921875F};
    for (int step = -260; step <= 260; ++step)
        floats.push_back(static_cast<float>(step) / 256.0F);
    for (std::size_t i = 0, steps = floats.size(); i < steps; ++i)
        for (const float direction : {-2.0F, 2.0F})
            floats.push_back(std::nextafter(floats[i], direction));
    for (std::uint64_t pattern = 0; pattern < std::uint64_t{1} << 32; pattern += 4093)
        floats.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(pattern)));
    return floats;
}

template <class Format>
Format formatOf(Format*);
template <class Format>
Format formatOf(model::Summing<Format>);

/// Containers of an output type with random bytes, among them NaNs.
template <class Out>
auto randomContainers(std::size_t count) {
    std::mt19937 random(5);
    std::vector<decltype(formatOf(std::declval<Out>()))> containers(count);
    for (auto& container : containers)
        for (unsigned char& byte : container.bytes)
            byte = static_cast<unsigned char>(random() % 4 == 0 ? 0xFF : random());
    return containers;
}

} // namespace audlmd::test
