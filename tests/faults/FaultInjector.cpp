// Preloaded in front of a program: AUDLMD_FAULT="KIND N ACTION" has the N-th call of a kind, counted from 1,
// do something else than its work. Calls before main() do not count. The kinds are those of `names` below.
// The actions:
//   an errno value          fails with it (an allocation returns null, whatever the value)
//   an errno value and +    fails with it from then on, as a full disk does
//   short                   reads or writes half of what was asked for
//   signal NUMBER           works, and sends a signal to the process
//   truncate|grow PATH      works on a file that has just been changed so
//   replace PATH FILE       works when FILE has just been renamed to PATH
// AUDLMD_FAULT_CALLS names a file that gets a line for each kind: how often it was called. C library calls
// from within the C library (of printf, say) do not come by here.

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <pthread.h>
#include <span>
#include <sys/types.h>
#include <unistd.h>

extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
}

namespace {

enum Kind { reading, writing, opening, seeking, syncing, closing, renaming, starting, allocating, kinds };
constexpr std::array<const char*, kinds> names{"read",  "write",  "open",   "seek",    "sync",
                                               "close", "rename", "thread", "allocate"};

struct Fault {
    int kind = kinds;
    long call = 0;
    char action[16] = "";
    char path[512] = "";
    char other[512] = "";
} fault;
std::array<std::atomic<long>, kinds> calls;

void readFault(const char* text) {
    char kind[16] = "";
    if (std::sscanf(text, "%15s %ld %15s %511s %511s", kind, &fault.call, fault.action, fault.path,
                    fault.other) < 3)
        std::abort();
    const auto isNamed = [&](const char* name) { return std::strcmp(name, kind) == 0; };
    fault.kind = static_cast<int>(std::ranges::find_if(names, isNamed) - names.begin());
}

using Main = int(int, char**, char**);
Main* programMain = nullptr;
bool mainHasBegun = false;

/// Where the C++ library is, which calls malloc() for the operator new.
const char* allocatorFrom = nullptr;
const char* allocatorTo = nullptr;

int findAllocator(dl_phdr_info* library, std::size_t, void*) {
    if (std::strstr(library->dlpi_name, "libstdc++") == nullptr)
        return 0;
    for (const ElfW(Phdr) & part : std::span(library->dlpi_phdr, library->dlpi_phnum))
        if (part.p_type == PT_LOAD) {
            const char* const begin = reinterpret_cast<const char*>(library->dlpi_addr) + part.p_vaddr;
            allocatorFrom = allocatorFrom == nullptr ? begin : allocatorFrom;
            allocatorTo = begin + part.p_memsz;
        }
    return 1;
}

int countedMain(int argc, char** argv, char** environment) {
    if (const char* text = std::getenv("AUDLMD_FAULT"))
        readFault(text);
    dl_iterate_phdr(&findAllocator, nullptr);
    mainHasBegun = true;
    return programMain(argc, argv, environment);
}

template <class Function>
Function* real(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}
// The functions that are defined below, as the C library has them.
#define REAL(name) (real(&(name), #name))

/// What the world does beside the call.
void disturb() {
    const auto is = [](const char* action) { return std::strcmp(fault.action, action) == 0; };
    if (is("signal"))
        kill(getpid(), std::atoi(fault.path));
    else if (is("truncate") && truncate(fault.path, 1000) != 0)
        std::abort();
    else if (is("replace") && REAL(rename)(fault.other, fault.path) != 0)
        std::abort();
    else if (is("grow")) {
        const int file = REAL(open)(fault.path, O_WRONLY | O_APPEND);
        static constexpr std::array<char, 1000> more{};
        if (REAL(write)(file, more.data(), more.size()) != 1000 || REAL(close)(file) != 0)
            std::abort();
    }
}

/// Counts a call. Returns whether it is to fail, with errno set.
bool fails(Kind kind) {
    if (!mainHasBegun)
        return false;
    const long call = ++calls[kind];
    const bool lasting = std::strchr(fault.action, '+') != nullptr;
    if (fault.kind != kind || (lasting ? call < fault.call : call != fault.call))
        return false;
    if (const int error = std::atoi(fault.action); error != 0) {
        errno = error;
        return true;
    }
    disturb();
    return false;
}

bool failsToAllocate(const void* caller) {
    const auto* const place = static_cast<const char*>(caller);
    return place >= allocatorFrom && place < allocatorTo && fails(allocating);
}

/// Of a call that has just been counted.
std::size_t shortened(Kind kind, std::size_t bytes) {
    const bool here = mainHasBegun && fault.kind == kind && calls[kind] == fault.call &&
                      std::strcmp(fault.action, "short") == 0;
    return here && bytes > 1 ? bytes / 2 : bytes;
}

[[gnu::destructor]] void writeCalls() {
    if (const char* path = std::getenv("AUDLMD_FAULT_CALLS")) {
        std::FILE* file = std::fopen(path, "w");
        for (std::size_t kind = 0; kind < kinds; ++kind)
            std::fprintf(file, "%s %ld\n", names[kind], calls[kind].load());
        std::fclose(file);
    }
}

} // namespace

extern "C" {

/// Starts every program.
int __libc_start_main(Main* main, int argc, char** argv, void (*init)(), void (*fini)(), void (*atExit)(),
                      void* stack) {
    programMain = main;
    return REAL(__libc_start_main)(&countedMain, argc, argv, init, fini, atExit, stack);
}
ssize_t read(int file, void* bytes, std::size_t count) {
    return fails(reading) ? -1 : REAL(read)(file, bytes, shortened(reading, count));
}
ssize_t pread(int file, void* bytes, std::size_t count, off_t position) {
    return fails(reading) ? -1 : REAL(pread)(file, bytes, shortened(reading, count), position);
}
ssize_t write(int file, const void* bytes, std::size_t count) {
    return fails(writing) ? -1 : REAL(write)(file, bytes, shortened(writing, count));
}
int open(const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return fails(opening) ? -1 : REAL(open)(path, flags, mode);
}
int mkostemp(char* path, int flags) {
    return fails(opening) ? -1 : REAL(mkostemp)(path, flags);
}
std::FILE* fopen(const char* path, const char* mode) {
    return fails(opening) ? nullptr : REAL(fopen)(path, mode);
}
off_t lseek(int file, off_t offset, int whence) noexcept {
    return fails(seeking) ? -1 : REAL(lseek)(file, offset, whence);
}
int ftruncate(int file, off_t length) noexcept {
    return fails(seeking) ? -1 : REAL(ftruncate)(file, length);
}
int fsync(int file) {
    return fails(syncing) ? -1 : REAL(fsync)(file);
}
int close(int file) {
    const bool failed = fails(closing);
    const int error = errno;
    const int result = REAL(close)(file); // also where it fails, as Linux does
    return failed ? (errno = error, -1) : result;
}
int rename(const char* from, const char* to) noexcept {
    return fails(renaming) ? -1 : REAL(rename)(from, to);
}
int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                   void* argument) noexcept {
    return fails(starting) ? errno : REAL(pthread_create)(thread, attributes, run, argument);
}
void* malloc(std::size_t bytes) noexcept {
    return failsToAllocate(__builtin_return_address(0)) ? nullptr : __libc_malloc(bytes);
}
void* calloc(std::size_t number, std::size_t bytes) noexcept {
    return failsToAllocate(__builtin_return_address(0)) ? nullptr : __libc_calloc(number, bytes);
}
void* realloc(void* block, std::size_t bytes) noexcept {
    return failsToAllocate(__builtin_return_address(0)) ? nullptr : __libc_realloc(block, bytes);
}
void* aligned_alloc(std::size_t alignment, std::size_t bytes) noexcept {
    return failsToAllocate(__builtin_return_address(0)) ? nullptr : __libc_memalign(alignment, bytes);
}

} // extern "C"
