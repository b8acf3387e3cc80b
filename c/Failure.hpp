#pragma once

#include <exception>
#include <new>
#include <string>
#include <utility>

namespace audlmd::c {

/// What audlmd_error() returns on this thread.
inline thread_local std::string lastError;

/// Calls `work`, and returns what it returns. No exception passes: its text is kept, and `failed` returned.
template <class Result, class Work>
Result guarded(Result failed, Work&& work) noexcept {
    try {
        return std::forward<Work>(work)();
    } catch (const std::bad_alloc&) {
        lastError = "no memory"; // fits into the text itself
    } catch (const std::exception& error) {
        try {
            lastError = error.what();
        } catch (const std::bad_alloc&) {
            lastError = "no memory";
        }
    } catch (...) {
        lastError = "unknown error";
    }
    return failed;
}

} // namespace audlmd::c
