#pragma once

#include <utility>

namespace audlmd {

/// Holds an object that is never destroyed. Use it for static objects of this host that other libraries need
/// while the process ends, when destructors run in an order that nobody controls. A union does not call its
/// member's destructor. The trap: what the object owns, such as open files, is left to the system. The
/// members of a static Immortal can be reached at any time after its construction, in destructors of other
/// static objects too.
template <class T>
union Immortal {
    template <class... Arguments>
    constexpr explicit Immortal(Arguments&&... arguments) : object(std::forward<Arguments>(arguments)...) {}
    Immortal(const Immortal&) = delete;
    Immortal& operator=(const Immortal&) = delete;
    // Defaulted, the destructor would be deleted. NOLINTNEXTLINE(modernize-use-equals-default)
    constexpr ~Immortal() {}

    T object;
};

} // namespace audlmd
