#include "bench/sound/SineFit.hpp"

#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <utility>

namespace audlmd::sound {
namespace {

/// A value for each term of the fit: sine, cosine, mean and, if the frequency is fitted, the derivative by
/// the angular frequency.
template <std::size_t Size>
using Values = std::array<double, Size>;

/// Solves a symmetric positive definite system by Gaussian elimination.
template <std::size_t Size>
Values<Size> solve(std::array<Values<Size>, Size> matrix, Values<Size> right) {
    for (std::size_t pivot = 0; pivot < Size; ++pivot)
        for (std::size_t row = pivot + 1; row < Size; ++row) {
            const double factor = matrix[row][pivot] / matrix[pivot][pivot];
            for (std::size_t column = pivot; column < Size; ++column)
                matrix[row][column] -= factor * matrix[pivot][column];
            right[row] -= factor * right[pivot];
        }
    for (std::size_t row = Size; row-- > 0;) {
        for (std::size_t column = row + 1; column < Size; ++column)
            right[row] -= matrix[row][column] * right[column];
        right[row] /= matrix[row][row];
    }
    return right;
}

/// The factors of the terms that fit the signal with the least squares. `basisAt(i)` gives the terms at
/// sample i.
template <std::size_t Size, class BasisAt>
Values<Size> leastSquares(std::span<const float> signal, BasisAt basisAt) {
    std::array<Values<Size>, Size> matrix{};
    Values<Size> right{};
    for (std::size_t i = 0; i < signal.size(); ++i) {
        const Values<Size> basis = basisAt(i);
        for (std::size_t row = 0; row < Size; ++row) {
            for (std::size_t column = 0; column < Size; ++column)
                matrix[row][column] += basis[row] * basis[column];
            right[row] += basis[row] * static_cast<double>(signal[i]);
        }
    }
    return solve(matrix, right);
}

/// Time runs from -1 to 1 around the middle of the signal, which keeps the system well conditioned.
double timeOf(std::size_t i, std::size_t length) {
    return (static_cast<double>(i) - 0.5 * static_cast<double>(length - 1)) /
           (0.5 * static_cast<double>(length));
}

} // namespace

SineFit fitSineOfKnownFrequency(std::span<const float> signal, double frequency) {
    // In radians per unit of timeOf().
    const double speed = std::numbers::pi * frequency * static_cast<double>(signal.size());
    const auto basisAt = [&](std::size_t i) {
        const double angle = speed * timeOf(i, signal.size());
        return Values<3>{std::sin(angle), std::cos(angle), 1.0};
    };
    const Values<3> found = leastSquares<3>(signal, basisAt);
    double squares = 0.0;
    for (std::size_t i = 0; i < signal.size(); ++i) {
        const Values<3> basis = basisAt(i);
        const double rest =
            static_cast<double>(signal[i]) - found[0] * basis[0] - found[1] * basis[1] - found[2];
        squares += rest * rest;
    }
    return {frequency, std::hypot(found[0], found[1]),
            std::sqrt(squares / static_cast<double>(signal.size()))};
}

SineFit fitSine(std::span<const float> signal, double guess) {
    const auto length = static_cast<double>(signal.size());
    double speed = std::numbers::pi * guess * length;
    Values<3> found{};
    // Gauss-Newton: each round fits a correction of the frequency. Eight rounds are more than enough.
    constexpr int iterations = 8;
    for (int iteration = 0; iteration < iterations; ++iteration) {
        const auto basisAt = [&](std::size_t i) {
            const double time = timeOf(i, signal.size());
            const double sine = std::sin(speed * time);
            const double cosine = std::cos(speed * time);
            return Values<4>{sine, cosine, 1.0, time * (found[0] * cosine - found[1] * sine)};
        };
        if (iteration == 0)
            found = leastSquares<3>(signal, [&](std::size_t i) {
                const Values<4> basis = basisAt(i);
                return Values<3>{basis[0], basis[1], basis[2]};
            });
        const Values<4> step = leastSquares<4>(signal, basisAt);
        found = {step[0], step[1], step[2]};
        speed += step[3];
    }
    return fitSineOfKnownFrequency(signal, speed / (std::numbers::pi * length));
}

} // namespace audlmd::sound
