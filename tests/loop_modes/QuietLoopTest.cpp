// Counts what the sample loop must not do: this program stands before the C library's allocation and locking,
// and traps every system call.

#include "model/Model.hpp"
#include "model/OutputTypes.hpp"
#include "tests/scripted_host/ScriptedHost.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <dlfcn.h>
#include <linux/prctl.h>
#include <pthread.h>
#include <sys/prctl.h>

namespace {

std::size_t allocations = 0;
std::size_t locks = 0;
volatile std::sig_atomic_t systemCalls = 0;
/// While it is 1, the kernel raises SIGSYS instead of serving this thread.
volatile char systemCallsTrapped = 0;

extern "C" void countSystemCall(int) {
    systemCallsTrapped = 0;
    systemCalls = systemCalls + 1;
}

} // namespace

extern "C" {

void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);

void* malloc(std::size_t size) {
    ++allocations;
    return __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
    ++allocations;
    return __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) {
    ++allocations;
    return __libc_realloc(block, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    ++allocations;
    return __libc_memalign(alignment, size);
}
int pthread_mutex_lock(pthread_mutex_t* mutex) {
    static auto* const lock =
        reinterpret_cast<decltype(&pthread_mutex_lock)>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    ++locks;
    return lock(mutex);
}

} // extern "C"

namespace audlmd::test {
namespace {

class SomeCache final : public Aud::SampleCache {};

/// A source of ready segments, and everything that any mode reads of a request.
class ReadySource {
public:
    explicit ReadySource(unsigned int code) : samples_(16384, 0.25F), forward_(code >= 1024) {
        host_.logging = false;
        host_.materialSamples = static_cast<std::int64_t>(samples_.size());
        for (std::int64_t first = 0; first < host_.materialSamples; first += 256)
            host_.segments.push_back({first, 256, {1}});
        host_.material = samples_.data();
        host_.levelSegments = {{100, 0.5F, 0.001F, 0}};
        host_.cache = &cache_;
        host_.gearing = &gearing_;
        host_.record = &record_;
        record_.dynamicLevel = {.samplesToNextNode = 50, .uValueStep = 0.001F, .stationary = 0};
        static constexpr std::uint32_t tags[12] = {0, 0, 0, 0, 0, 0, 4, 5, 6, 4, 5, 6};
        record_.envelope.type = tags[model::Digits(code).middle];
        if (record_.envelope.type == 6)
            record_.envelope.twoRamps = {1e-4F, 1e-4F, 30, 2000, 2, 3};
        else
            record_.envelope.oneRamp = {1e-4F, 2000, 2, {}};
        ScriptedHost::current = &host_;
    }

    void render(std::size_t outputType, unsigned int code, std::vector<std::uint8_t>& buffer,
                unsigned int count) {
        start_ = forward_ ? 0 : host_.materialSamples - 1;
        Aud::Render::IteratorCreationParams params{&record_, &start_, &flag_,  &argument_, &start_, &start_,
                                                   &offset_, &step_,  &speed_, &gearing_,  &cache_};
        std::uint8_t* position = buffer.data();
        model::renderThroughTable(outputType, code, params, position, count);
    }

private:
    std::vector<float> samples_;
    bool forward_;
    ScriptedHost host_;
    SomeCache cache_;
    Orv::OutputGearing gearing_;
    Aud::Render::PerSourceRecord record_;
    std::int64_t start_ = 0;
    bool flag_ = true;
    std::uint32_t argument_ = 2;
    Aud::SubSamplePos offset_{0, 5};
    Aud::SubSamplePos step_{1, 5};
    float speed_ = 1.0F;
};

class QuietLoop : public testing::TestWithParam<std::size_t> {};

TEST_P(QuietLoop, NeitherAllocatesNorLocksNorCallsTheSystem) {
    std::signal(SIGSYS, &countSystemCall);
    ASSERT_EQ(prctl(PR_SET_SYSCALL_USER_DISPATCH, PR_SYS_DISPATCH_ON, 0, 0, &systemCallsTrapped), 0)
        << "this kernel cannot trap system calls; Linux 5.11 and later can";
    std::vector<std::uint8_t> buffer(4096 * 4);
    std::size_t differing = 0;
    for (unsigned int code : model::registrationOrder()) {
        ReadySource source(code);
        // The first call opens the resampler; after that, what a call does must not depend on its length.
        source.render(GetParam(), code, buffer, 0);
        std::size_t counted[2][2] = {};
        for (unsigned int i : {0U, 1U}) {
            allocations = locks = 0;
            systemCallsTrapped = 1;
            source.render(GetParam(), code, buffer, i == 0 ? 64 : 4096);
            systemCallsTrapped = 0;
            counted[i][0] = allocations;
            counted[i][1] = locks;
        }
        if (counted[0][0] != counted[1][0] || counted[0][1] != counted[1][1] || systemCalls != 0)
            ++differing;
        EXPECT_LE(differing, 3U) << "code " << code;
        systemCalls = 0;
    }
    EXPECT_EQ(differing, 0U) << "modes that allocate, lock or call the system";
}

TEST(QuietLoopCounters, CountWhatTheyStandFor) {
    allocations = locks = 0;
    ::operator delete(::operator new(100));
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_mutex_lock(&mutex);
    pthread_mutex_unlock(&mutex);
    EXPECT_EQ(allocations, 1U);
    EXPECT_EQ(locks, 1U);
    std::signal(SIGSYS, &countSystemCall);
    ASSERT_EQ(prctl(PR_SET_SYSCALL_USER_DISPATCH, PR_SYS_DISPATCH_ON, 0, 0, &systemCallsTrapped), 0);
    systemCallsTrapped = 1;
    getppid();
    systemCallsTrapped = 0;
    EXPECT_EQ(systemCalls, 1);
    systemCalls = 0;
}

INSTANTIATE_TEST_SUITE_P(Into, QuietLoop, testing::Range(std::size_t{0}, model::outputTypeCount),
                         [](const auto& output) { return model::outputTypeNames[output.param]; });

} // namespace
} // namespace audlmd::test
