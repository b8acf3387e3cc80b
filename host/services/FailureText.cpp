#include "host/services/FailureText.hpp"

#include <exception>
#include <new>

namespace audlmd {
namespace {

std::string textInHand(const char* otherwise) {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& failure) {
        return failure.what();
    } catch (...) {
        return otherwise;
    }
}

} // namespace

std::string failureText(const char* otherwise) noexcept {
    try {
        return textInHand(otherwise);
    } catch (...) {
        // Short enough for a string to hold without memory of its own.
        return "out of memory";
    }
}

} // namespace audlmd
