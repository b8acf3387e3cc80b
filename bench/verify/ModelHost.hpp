#pragma once

#include "bench/host/BenchHost.hpp"
#include "host/Biquad.hpp"
#include "model/Script.hpp"

namespace Bench {

/// The host that the model asks, answering as the host of the benchmarks does. One at a time.
class ModelHost {
public:
    ModelHost(const Cache& cache, Aud::Filter::MultiBandBiquad<5U>& equaliser);
    ModelHost(const ModelHost&) = delete;
    ModelHost& operator=(const ModelHost&) = delete;
    ~ModelHost();

    Test::Script script() const;

private:
    const Cache& cache_;
};

} // namespace Bench
