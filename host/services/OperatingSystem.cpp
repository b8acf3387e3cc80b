#include "contract/OperatingSystem.hpp"

#include "ole/Orv/LightweightString.hpp"

#include <array>
#include <atomic>
#include <cstdlib>
#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <iterator>
#include <memory>
#include <new>
#include <pthread.h>
#include <span>
#include <sstream>
#include <string>
#include <unistd.h>

namespace {

/// Counts with atomic operations on the object's own count.
class ReferenceCounts final : public iReferenceCounts {
public:
    /// Relaxed order is enough, because whoever adds a holder already holds the object.
    void increment(std::int32_t& count) noexcept override {
        std::atomic_ref(count).fetch_add(1, std::memory_order_relaxed);
    }
    /// The holder that finds 0 left destroys the object. Acquire and release order let that holder see all
    /// that the others did to the object.
    std::int32_t decrement(std::int32_t& count) noexcept override {
        return std::atomic_ref(count).fetch_sub(1, std::memory_order_acq_rel) - 1;
    }
};

/// The C library's heap, which is the same for all libraries of a process. Storage that one library allocates
/// may therefore be released by another.
class Heap final : public iHeap {
public:
    void* allocate(std::size_t bytes) override {
        // malloc may return null for 0 bytes, which would look like a failure.
        void* const storage = std::malloc(bytes == 0 ? 1 : bytes);
        if (storage == nullptr)
            throw std::bad_alloc();
        return storage;
    }
    void release(void* storage) noexcept override { std::free(storage); }
};

/// Names the function that an address lies in, the offset there and the library: "f(int) + 0x1a in libx.so".
/// Where the function has no name, the offset counts from the start of the library. dladdr knows exported
/// names only, so a static function appears as an offset in its library.
std::string describeCall(const void* address) {
    std::ostringstream text;
    Dl_info symbol{};
    if (dladdr(address, &symbol) == 0) {
        text << address;
        return text.str();
    }
    const auto offsetFrom = [address](const void* start) {
        return static_cast<const char*>(address) - static_cast<const char*>(start);
    };
    text << std::hex;
    if (symbol.dli_sname != nullptr) {
        int status = 0;
        const std::unique_ptr<char, void (*)(void*)> demangled(
            abi::__cxa_demangle(symbol.dli_sname, nullptr, nullptr, &status), &std::free);
        // The name of a C function cannot be demangled, and is written as it is.
        text << (status == 0 ? demangled.get() : symbol.dli_sname) << " + 0x" << offsetFrom(symbol.dli_saddr)
             << " in " << symbol.dli_fname;
    } else {
        text << symbol.dli_fname << " + 0x" << offsetFrom(symbol.dli_fbase);
    }
    return text.str();
}

/// Notes the thread that an exception is made on, then the calls that led there, the innermost first. The
/// notes are texts that are made at once, because a library may be unloaded before anybody reads them.
class ExceptionRecorder final : public iExceptionRecorder {
public:
    void record(ExceptionNotes& notes) override {
        // A failure to take notes must not replace the exception that the notes are about.
        try {
            // The kernel keeps 15 characters and the closing 0. The number is the one that debuggers and top
            // -H show.
            std::array<char, 16> threadName{};
            pthread_getname_np(pthread_self(), threadName.data(), threadName.size());
            std::ostringstream thread;
            thread << "thread " << gettid() << " (" << threadName.data() << ")";
            notes.emplace_back(thread.str());

            // The call of this function itself.
            constexpr int ownCalls = 1;
            std::array<void*, 24> calls{};
            const int depth = backtrace(calls.data(), static_cast<int>(std::size(calls)));
            for (int i = ownCalls; i < depth; ++i)
                notes.emplace_back(describeCall(calls[static_cast<std::size_t>(i)]));
        } catch (...) {
        }
    }
};

/// Hands out the three services. The services have no state, so any thread may use them at any time.
class OperatingSystem final : public iOperatingSystem {
public:
    iReferenceCounts& referenceCounts() noexcept override { return referenceCounts_; }
    iHeap& heap() noexcept override { return heap_; }
    iExceptionRecorder& exceptionRecorder() noexcept override { return exceptionRecorder_; }

private:
    ReferenceCounts referenceCounts_;
    Heap heap_;
    ExceptionRecorder exceptionRecorder_;
};

/// Made at compile time, and without a destructor: usable from the first static initialiser to the last
/// destructor of the process.
constinit OperatingSystem operatingSystem;

} // namespace

/// The library reaches the process through this one function.
iOperatingSystem& OS() noexcept {
    return operatingSystem;
}
