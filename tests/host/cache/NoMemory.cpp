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
