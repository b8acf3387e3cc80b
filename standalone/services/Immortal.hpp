#pragma once

#include <utility>

namespace audlmd {

/// Holds an object that is never destroyed: other libraries still use it while the process is taken down.
template <class T>
union Immortal {
    template <class... Arguments>
    constexpr explicit Immortal(Arguments&&... arguments) : object(std::forward<Arguments>(arguments)...) {}
    Immortal(const Immortal&) = delete;
    Immortal& operator=(const Immortal&) = delete;
    // A defaulted one would be deleted. NOLINTNEXTLINE(modernize-use-equals-default)
    constexpr ~Immortal() {}

    T object;
};

} // namespace audlmd
