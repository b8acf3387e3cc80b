#pragma once

#include "tools/audlmd/files/OutputFormat.hpp"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace audlmd::command {

/// What the report of a mix says of one slice.
struct SliceReport {
    /// For messages.
    std::filesystem::path path;
    nlohmann::json json = {};
    std::int64_t number = 0;
    std::int64_t count = 0;
    /// See wholeName().
    std::string whole = {};
    std::int64_t from = 0;
    std::int64_t to = 0;
    std::int64_t timeReference = 0;
    int channels = 0;
    int sampleRate = 0;
    FormatId format = FormatId::f32;
    /// The sound, where the report says, else under the same name beside the report.
    std::filesystem::path sound = {};
};

/// Reads the reports of all slices of one whole, and puts them in order. Throws CommandError for what is no
/// such report, for a mix that failed, and unless each slice is there once.
std::vector<SliceReport> readSlices(const std::vector<std::filesystem::path>& reports);

/// One report from those of all slices. Each problem of the same clip is added up; what the whole's report
/// tells once, such as a note, is told once.
nlohmann::json mergedReport(const std::vector<SliceReport>& slices, const std::string& output);

} // namespace audlmd::command
