// The audio callback must not allocate, lock or call the system. Here it runs on a thread whose calls of the
// allocator and of the locks are counted, and whose system calls are trapped.

#include "tests/standalone/play/LiveDeck.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <dlfcn.h>
#include <iterator>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <random>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <thread>

namespace {

thread_local bool inCallback = false;
std::atomic<int> allocatorCalls{0};
std::atomic<int> lockCalls{0};
std::atomic<int> systemCalls{0};

void count(std::atomic<int>& calls) {
    if (inCallback)
        calls.fetch_add(1, std::memory_order_relaxed);
}

} // namespace

// Found before those of the C library.
extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void __libc_free(void*);

void* malloc(std::size_t size) {
    count(allocatorCalls);
    return __libc_malloc(size);
}
void* calloc(std::size_t number, std::size_t size) {
    count(allocatorCalls);
    return __libc_calloc(number, size);
}
void free(void* block) {
    count(allocatorCalls);
    __libc_free(block);
}
int pthread_mutex_lock(pthread_mutex_t* mutex) {
    static const auto real =
        reinterpret_cast<int (*)(pthread_mutex_t*)>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    count(lockCalls);
    return real(mutex);
}
}

namespace audlmd::test {
namespace {

using Clock = std::chrono::steady_clock;

void onTrap(int) {
    systemCalls.fetch_add(1, std::memory_order_relaxed);
}

/// From now on a system call of this thread counts and does nothing, but for the ones by which a handler and
/// the thread end. Returns whether the kernel agrees.
bool trapSystemCalls() {
    struct sigaction action {};
    action.sa_handler = &onTrap;
    sigaction(SIGSYS, &action, nullptr);
    constexpr unsigned int allowed[] = {SYS_rt_sigreturn, SYS_exit, SYS_madvise, SYS_munmap,
                                        SYS_rt_sigprocmask};
    std::vector<sock_filter> filter{BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
    for (const unsigned int call : allowed) {
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1));
        filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    }
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP));
    const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

/// Calls fill() in time until told to stop. Waits by looking at the clock, which is no system call.
void runDevice(LivePlayer& player, const std::atomic<bool>& stops, std::atomic<bool>& isTrapped) {
    std::vector<float> buffer(128 * player.channels());
    inCallback = false;
    isTrapped = trapSystemCalls();
    for (auto next = Clock::now(); !stops; next += std::chrono::microseconds(2667)) {
        while (Clock::now() < next) {
        }
        inCallback = true;
        player.fill(buffer);
        inCallback = false;
    }
}

TEST(LiveRealTime, TheCallbackNeitherAllocatesNorLocksNorCallsTheSystem) {
    LivePlayer player({.channels = {sineSource(440.0, 480000), sineSource(550.0, 480000)}}, {});
    std::atomic<bool> stops{false};
    std::atomic<bool> isTrapped{false};
    {
        std::jthread device([&] { runDevice(player, stops, isTrapped); });
        std::mt19937 random(1);
        player.play();
        for (int change = 0; change < 150; ++change) {
            const double speeds[] = {1.0, -1.0, 1.1, -2.0, 8.0};
            player.setSpeed(speeds[random() % 5]);
            switch (random() % 4) {
            case 0:
                player.seek(static_cast<std::int64_t>(random() % 480000));
                break;
            case 1:
                player.stop();
                player.jog(3000);
                break;
            default:
                player.play();
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        stops = true;
    }
    EXPECT_GT(player.takePeak(0), 0.1F);
    EXPECT_EQ(allocatorCalls, 0);
    EXPECT_EQ(lockCalls, 0);
    EXPECT_EQ(systemCalls, 0);
    if (!isTrapped)
        GTEST_SKIP() << "the kernel traps no system calls here; allocations and locks were counted";
}

} // namespace
} // namespace audlmd::test
