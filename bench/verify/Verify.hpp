#pragma once

#include "bench/host/BenchHost.hpp"

#include <cstddef>
#include <optional>
#include <string>

namespace Bench {

/// Renders a request through the despatch table and through the tests' model of the chain, twice in a row,
/// and says where they differ; nothing if they do not.
std::optional<std::string> differenceFromModel(unsigned int code, std::size_t outputType, Cache& cache,
                                               double speed);

} // namespace Bench
