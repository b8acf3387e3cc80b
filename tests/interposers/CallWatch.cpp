// The functions of the C library that allocate and lock are defined here once more, and are found first.

#include "tests/interposers/CallWatch.hpp"

#include <cerrno>
#include <csignal>
#include <dlfcn.h>
#include <linux/prctl.h>
#include <pthread.h>
#include <stdexcept>
#include <sys/prctl.h>

namespace {

thread_local audlmd::test::Calls* watched = nullptr;
/// While it is 1, the kernel raises SIGSYS instead of serving this thread.
thread_local volatile char systemCallsTrapped = 0;

void count(std::size_t audlmd::test::Calls::*calls) {
    if (watched != nullptr)
        ++(watched->*calls);
}

void countAllocation() {
    count(&audlmd::test::Calls::allocator);
}

extern "C" void countSystemCall(int) {
    systemCallsTrapped = 0;
    count(&audlmd::test::Calls::system);
}

} // namespace

extern "C" {

void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
void __libc_free(void*);

void* malloc(std::size_t size) {
    countAllocation();
    return __libc_malloc(size);
}
void* calloc(std::size_t number, std::size_t size) {
    countAllocation();
    return __libc_calloc(number, size);
}
void* realloc(void* block, std::size_t size) {
    countAllocation();
    return __libc_realloc(block, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    countAllocation();
    return __libc_memalign(alignment, size);
}
void* memalign(std::size_t alignment, std::size_t size) {
    return aligned_alloc(alignment, size);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    *block = aligned_alloc(alignment, size);
    return *block != nullptr ? 0 : ENOMEM;
}
void free(void* block) {
    countAllocation();
    __libc_free(block);
}
int pthread_mutex_lock(pthread_mutex_t* mutex) {
    static const auto lock =
        reinterpret_cast<decltype(&pthread_mutex_lock)>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    count(&audlmd::test::Calls::locks);
    return lock(mutex);
}

} // extern "C"

namespace audlmd::test {

CallWatch::CallWatch(Calls& calls) {
    std::signal(SIGSYS, &countSystemCall);
    if (prctl(PR_SET_SYSCALL_USER_DISPATCH, PR_SYS_DISPATCH_ON, 0, 0, &systemCallsTrapped) != 0)
        throw std::runtime_error("this kernel cannot trap system calls; Linux 5.11 and later can");
    watched = &calls;
    systemCallsTrapped = 1;
}

CallWatch::~CallWatch() {
    systemCallsTrapped = 0;
    watched = nullptr;
    prctl(PR_SET_SYSCALL_USER_DISPATCH, PR_SYS_DISPATCH_OFF, 0, 0, 0);
}

} // namespace audlmd::test
