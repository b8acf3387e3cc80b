#pragma once

#include "contract/DespatchTables.hpp"
#include "ole/Orv/Exception.hpp"

#include <cstddef>
#include <vector>

namespace Orv::ModeMetaHelpers2 {

/// A growable table of functions, indexed by mode code. Null where no function is registered.
///
/// `Tag` keeps tables of equal function types apart.
/// \snippet chain.cpp despatcher
template <class Fn, class Tag>
class Despatcher {
public:
    /// Puts `fn` into the slot for `code`, and appends null slots up to it where the table is shorter.
    /// Throws Orv::Exception::RuntimeError if the slot is taken; the function in it stays.
    [[gnu::used, gnu::noinline]] void registerFunction(unsigned long code, Fn fn) {
        while (functions_.size() <= code)
            functions_.push_back(nullptr);
        if (functions_[code] != nullptr)
            throw Exception::RuntimeError(redefinition, sourceFile, redefinitionLine);
        functions_[code] = fn;
    }

    std::size_t size() const noexcept { return functions_.size(); }

    /// The function for `code`, null if there is none.
    Fn find(unsigned long code) const noexcept {
        return code < functions_.size() ? functions_[code] : nullptr;
    }

private:
    // The host matches these by their letters, the misspelling included, and by the line.
    static constexpr const char* redefinition = "Redefintion of previously defined mode code!";
    static constexpr const char* sourceFile = "ole/Orv/OrvModeMeta";
    static constexpr int redefinitionLine = 95;

    std::vector<Fn> functions_;
};

} // namespace Orv::ModeMetaHelpers2
