#include "tools/audlmd/JobLog.hpp"

#include "host/words/Text.hpp"

#include <nlohmann/json.hpp>

#include <new>
#include <utility>

namespace audlmd::command {

using Json = nlohmann::json;

JobLog::JobLog(FILE* stream, JobStyle style, std::string input, bool named)
    : stream_(stream), style_(style), input_(std::move(input)), named_(named) {}

void JobLog::run(const std::function<void()>& job,
                 const std::function<void(const CommandError&)>& failed) const {
    try {
        job();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {
        const CommandError failure = currentFailure();
        error(failure);
        failed(failure);
        throw failure;
    }
}

void JobLog::note(const std::string& line) const {
    if (line.empty())
        return;
    if (style_.json)
        return print("note", {{"text", line}});
    std::fprintf(stream_, "%s%s\n", named_ ? (words::printable(input_) + ": ").c_str() : "", line.c_str());
}

void JobLog::result(const std::vector<std::string>& lines, const std::function<Json()>& result) const {
    if (style_.json)
        return print("result", result());
    for (const std::string& line : lines)
        note(line);
}

void JobLog::error(const CommandError& error) const {
    if (style_.json)
        print("error", {{"text", error.what()}, {"exitStatus", static_cast<int>(error.status())}});
}

/// At once, because the reader may wait for it.
void JobLog::print(const char* event, Json object) const {
    object["event"] = event;
    object["input"] = input_;
    // Names come from files, and may be no UTF-8.
    const std::string line = object.dump(-1, ' ', false, Json::error_handler_t::replace);
    std::fprintf(stream_, "%s\n", line.c_str());
    std::fflush(stream_);
}

void JobLog::progress(std::int64_t done, std::int64_t total) const {
    if (style_.json && !style_.quiet)
        print("progress", {{"frames", done}, {"of", total}});
}

} // namespace audlmd::command
