#include "tools/audlmd/CommandError.hpp"

#include "host/words/Text.hpp"
#include "ole/Orv/Exception.hpp"

#include <algorithm>
#include <cstdio>
#include <new>
#include <optional>
#include <system_error>

namespace audlmd::command {
namespace {

/// Says what to do where a system call has failed without a file to name.
std::string textOf(const std::system_error& error) {
    const std::string text = error.what();
    return error.code() == std::errc::resource_unavailable_try_again
               ? "a thread cannot be started, because a limit of threads or of memory is reached: raise it, "
                 "or try --threads 1 (" +
                     text + ")"
               : text;
}

} // namespace

CommandError currentFailure() {
    try {
        throw;
    } catch (const CommandError& error) {
        return error;
    } catch (const std::system_error& error) {
        return CommandError(textOf(error), ExitStatus::failed);
    } catch (const std::invalid_argument& error) {
        return CommandError(error.what(), ExitStatus::usage);
    } catch (const std::exception& error) {
        // What else can fail in the host is reading a file.
        return CommandError(error.what(), ExitStatus::input);
    } catch (const Orv::Exception::Base& error) {
        return CommandError(error.message(), ExitStatus::failed);
    }
}

void printError(std::string line) {
    std::ranges::replace(line, '\n', ' ');
    std::fprintf(stderr, "audlmd: %s\n", words::printable(line, line.size()).c_str());
}

void forEachInput(std::size_t count, const std::function<void(std::size_t)>& take,
                  const std::string& others) {
    std::optional<ExitStatus> first;
    std::size_t failures = 0;
    for (std::size_t input = 0; input < count; ++input) {
        try {
            take(input);
        } catch (const std::bad_alloc&) {
            throw;
        } catch (...) {
            const CommandError failure = currentFailure();
            if (count == 1)
                throw failure;
            printError(failure.what());
            first = first.value_or(failure.status());
            ++failures;
        }
    }
    if (first)
        throw CommandError(std::to_string(failures) + " of " + words::counted(count, "input") +
                               " failed, see above" + (failures < count ? others : ""),
                           *first);
}

} // namespace audlmd::command
