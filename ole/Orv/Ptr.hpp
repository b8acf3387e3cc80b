#pragma once

#include "contract/OperatingSystem.hpp"
#include "contract/ThreadEvent.hpp"

#include <utility>

namespace Orv {

/// Destroys an object through its destructor.
struct DtorTraits {
    template <class T>
    static void destroy(T* object) noexcept {
        delete object;
    }
};

/// The count of holders is a member of the object.
struct InternalRefCountTraits {
    template <class T>
    static std::int32_t& count(T& object) noexcept {
        return object.referenceCount;
    }
};

/// A counted handle. Counting goes through the host, so that all libraries count alike.
/// \snippet services.cpp event
template <class T, class DestructionTraits, class RefCountTraits>
class Ptr {
public:
    Ptr() noexcept = default;
    /// Becomes one more holder of the object.
    explicit Ptr(T* object) noexcept : object_(object) { acquire(); }
    Ptr(const Ptr& other) noexcept : object_(other.object_) { acquire(); }
    Ptr& operator=(Ptr other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Ptr() { release(); }

    explicit operator bool() const noexcept { return object_ != nullptr; }
    T* operator->() const noexcept { return object_; }
    T& operator*() const noexcept { return *object_; }

private:
    void acquire() noexcept {
        if (object_ != nullptr)
            OS().referenceCounts().increment(RefCountTraits::count(*object_));
    }
    void release() noexcept {
        if (object_ != nullptr && OS().referenceCounts().decrement(RefCountTraits::count(*object_)) == 0)
            DestructionTraits::destroy(object_);
    }

    T* object_ = nullptr;
};

} // namespace Orv
