#include "tests/host/cache/NoMemory.hpp"

#include <cstddef>
#include <cstdlib>
#include <new>
#include <utility>

namespace {

thread_local bool noMemory = false;

} // namespace

// Found before those of the standard library.
void* operator new(std::size_t size) {
    void* const storage = std::exchange(noMemory, false) ? nullptr : std::malloc(size == 0 ? 1 : size);
    return storage != nullptr ? storage : throw std::bad_alloc();
}
// What one of these makes, the deletes below free: under a sanitizer the standard library's has another heap.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size == 0 ? 1 : size);
}
void operator delete(void* storage) noexcept {
    std::free(storage);
}
void operator delete(void* storage, std::size_t) noexcept {
    std::free(storage);
}

namespace audlmd::test {

void failNextAllocation() {
    noMemory = true;
}

} // namespace audlmd::test
