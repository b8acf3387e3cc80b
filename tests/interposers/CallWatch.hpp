#pragma once

#include <cstddef>

namespace audlmd::test {

/// What code in real time must not ask for.
struct Calls {
    std::size_t allocator = 0;
    std::size_t locks = 0;
    std::size_t system = 0;

    bool operator==(const Calls&) const = default;
};

/// Counts the calls of the thread that makes it, in the program and in its shared libraries, until it is
/// destroyed. Throws std::runtime_error where the kernel cannot trap system calls. Trap: the first system
/// call of a watch does nothing and is the only one that counts.
class CallWatch {
public:
    explicit CallWatch(Calls& calls);
    ~CallWatch();
    CallWatch(const CallWatch&) = delete;
    CallWatch& operator=(const CallWatch&) = delete;
};

} // namespace audlmd::test
