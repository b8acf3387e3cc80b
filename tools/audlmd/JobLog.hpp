#pragma once

#include "tools/audlmd/CommandError.hpp"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace audlmd::command {

/// How a job tells what it does.
struct JobStyle {
    /// An object a line, for programs, in place of text.
    bool json = false;
    /// Only what is not as it was asked.
    bool quiet = false;
};

/// What a job tells while it runs, on one stream: lines of text for people, or an object a line for programs.
/// Each object has an "event": "progress", "note", "result" or "error".
class JobLog {
public:
    /// `input` names what the job works on. `named`: whether notes for people begin with it, which is needed
    /// where there are several.
    JobLog(FILE* stream, JobStyle style, std::string input, bool named = false);

    /// Runs the job. What it throws becomes a CommandError, but for a lack of memory; programs are told, and
    /// then `failed` is called. People are told by whoever catches it.
    void run(
        const std::function<void()>& job,
        const std::function<void(const CommandError&)>& failed = [](const CommandError&) {}) const;

    /// A note, if `line` has any text: {"event": "note", "text": ...}.
    void note(const std::string& line) const;
    /// The end of a job: `lines` for people; for programs what `result` makes, with the event and the input.
    /// Nothing is made for people: where memory is short, destroying an object ends the process.
    void result(const std::vector<std::string>& lines, const std::function<nlohmann::json()>& result) const;
    /// For programs alone, because people see a bar: {"event": "progress", "frames": ..., "of": ...}.
    void progress(std::int64_t done, std::int64_t total) const;

    const JobStyle& style() const { return style_; }

private:
    /// {"event": "error", "text": ..., "exitStatus": ...}
    void error(const CommandError& error) const;
    void print(const char* event, nlohmann::json object) const;

    FILE* stream_;
    JobStyle style_;
    std::string input_;
    bool named_;
};

} // namespace audlmd::command
