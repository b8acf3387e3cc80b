#pragma once

#include "ole/Orv/LightweightString.hpp"

namespace Orv::Exception {

/// Root of the exceptions that this system throws. Deliberately not a std::exception.
///
/// All texts are string literals, stored by pointer.
/// \snippet chain.cpp despatcher
class Base {
public:
    virtual ~Base() = default;

    const ExceptionNotes& notes() const noexcept { return notes_; }
    const char* typeName() const noexcept { return typeName_; }
    const char* message() const noexcept { return message_; }
    const char* file() const noexcept { return file_; }
    int line() const noexcept { return line_; }

protected:
    Base(const char* typeName, const char* message, const char* file, int line)
        : typeName_(typeName), message_(message), file_(file), line_(line) {
        OS().exceptionRecorder().record(notes_);
    }

private:
    ExceptionNotes notes_;
    const char* typeName_;
    const char* message_;
    const char* file_;
    int line_;
};

/// A parameter, or a registration, that breaks the contract.
class RuntimeError : public Base {
public:
    RuntimeError(const char* msg, const char* file, int line) : Base("RuntimeError", msg, file, line) {}
};

} // namespace Orv::Exception
