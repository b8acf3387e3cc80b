#pragma once

#include "contract/OperatingSystem.hpp"

#include <cstddef>
#include <cstring>
#include <limits>
#include <new>
#include <string_view>
#include <utility>

/// Takes the storage of a container from the host's heap, so that any library may free what another one
/// filled.
template <class T>
struct StdAllocator {
    using value_type = T;

    StdAllocator() = default;
    template <class U>
    StdAllocator(const StdAllocator<U>&) noexcept {}

    T* allocate(std::size_t count) {
        if (count > std::numeric_limits<std::size_t>::max() / sizeof(T))
            throw std::bad_array_new_length();
        return static_cast<T*>(OS().heap().allocate(count * sizeof(T)));
    }
    void deallocate(T* storage, std::size_t) noexcept { OS().heap().release(storage); }

    friend bool operator==(const StdAllocator&, const StdAllocator&) { return true; }
};

/// An immutable string of one pointer's size, whose copies share one counted body.
/// \snippet services.cpp string
template <class Char>
class LightweightString {
public:
    LightweightString() noexcept = default;
    explicit LightweightString(std::basic_string_view<Char> text) {
        if (text.empty())
            return;
        void* storage = OS().heap().allocate(sizeof(Body) + text.size() * sizeof(Char));
        body_ = new (storage) Body{1, text.size()};
        std::memcpy(characters(), text.data(), text.size() * sizeof(Char));
    }
    LightweightString(const LightweightString& other) noexcept : body_(other.body_) {
        if (body_ != nullptr)
            OS().referenceCounts().increment(body_->referenceCount);
    }
    LightweightString& operator=(LightweightString other) noexcept {
        std::swap(body_, other.body_);
        return *this;
    }
    /// The last holder frees the storage.
    ~LightweightString() {
        if (body_ != nullptr && OS().referenceCounts().decrement(body_->referenceCount) == 0)
            OS().heap().release(body_);
    }

    std::basic_string_view<Char> view() const noexcept {
        return body_ == nullptr ? std::basic_string_view<Char>()
                                : std::basic_string_view<Char>(characters(), body_->length);
    }

private:
    struct Body {
        std::int32_t referenceCount;
        std::size_t length;
    };

    /// The text stands right behind the body.
    Char* characters() const noexcept { return reinterpret_cast<Char*>(body_ + 1); }

    Body* body_ = nullptr;
};
