// In every program with a watch, because counts of zero prove nothing where nothing is counted.

#include "tests/interposers/CallWatch.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <mutex>
#include <thread>
#include <unistd.h>

namespace audlmd::test {
namespace {

/// Else the compiler leaves out an allocation that nothing needs.
void* kept(void* block) {
    [[maybe_unused]] static void* volatile keeper;
    keeper = block;
    return block;
}

TEST(CallWatch, CountsWhatItsThreadAsksFor) {
    void* block = nullptr;
    std::mutex mutex;
    const struct {
        const char* name;
        std::function<void()> ask;
        Calls calls;
    } cases[] = {
        {"nothing", [] {}, {}},
        {"malloc", [&] { block = std::malloc(100); }, {.allocator = 1}},
        {"realloc", [&] { block = std::realloc(block, 200); }, {.allocator = 1}},
        {"free", [&] { std::free(block); }, {.allocator = 1}},
        {"calloc", [] { std::free(kept(std::calloc(10, 10))); }, {.allocator = 2}},
        {"aligned_alloc", [] { std::free(kept(std::aligned_alloc(64, 128))); }, {.allocator = 2}},
        {"operator new", [] { ::operator delete(kept(::operator new(100))); }, {.allocator = 2}},
        {"a lock", [&] { const std::lock_guard lock(mutex); }, {.locks = 1}},
        {"a system call", [] { getppid(); }, {.system = 1}},
    };
    for (const auto& row : cases) {
        Calls calls;
        std::thread([&] {
            const CallWatch watch(calls);
            row.ask();
        }).join();
        EXPECT_EQ(calls, row.calls) << row.name;
    }
}

} // namespace
} // namespace audlmd::test
