#include "host/mix/WorkerPool.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <vector>

namespace audlmd::test {
namespace {

TEST(WorkerPool, DoesEveryJobOnceInEveryRound) {
    for (const std::size_t threads : {0U, 1U, 4U}) {
        WorkerPool pool(threads);
        std::vector<std::atomic<int>> done(100);
        for (std::size_t round = 0; round < 200; ++round)
            pool.run(round % done.size(), [&](std::size_t job) { ++done[job]; });
        for (std::size_t job = 0; job < done.size(); ++job)
            EXPECT_EQ(done[job], 2 * static_cast<int>(done.size() - 1 - job)) << threads << " threads";
    }
}

TEST(WorkerPool, RethrowsWhatAJobThrowsAndWorksOn) {
    WorkerPool pool(3);
    for (int round = 0; round < 50; ++round) {
        try {
            pool.run(10, [](std::size_t job) {
                if (job == 7)
                    throw std::runtime_error("job 7");
            });
            FAIL() << "nothing was thrown";
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(error.what(), std::string("job 7"));
        }
    }
    std::atomic<int> done{0};
    pool.run(10, [&](std::size_t) { ++done; });
    EXPECT_EQ(done, 10);
}

} // namespace
} // namespace audlmd::test
