#include "bench/Report.hpp"

#include <cstdio>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <unistd.h>

namespace audlmd::bench {

void showProgress(const std::string& what, std::size_t done, std::size_t all) {
    static const bool onTerminal = isatty(STDERR_FILENO) != 0;
    if (onTerminal && (done % 100 == 0 || done == all))
        std::fprintf(stderr, "\r%s %zu of %zu%s", what.c_str(), done, all, done == all ? "\n" : " ");
}

void report(const nlohmann::json& rows, const std::string& jsonFile) {
    if (jsonFile == "-") {
        std::cout << rows << '\n';
        return;
    }
    std::printf("%5s %-10s %6s %6s  %8s %8s  %8s %8s  %5s\n", "code", "output", "speed", "count", "min ns",
                "median", "floor", "median", "ratio");
    for (const auto& row : rows)
        std::printf("%5u %-10s %6g %6u  %8.2f %8.2f  %8.2f %8.2f  %5.2f\n", row["code"].get<unsigned int>(),
                    row["output"].get<std::string>().c_str(), row["speed"].get<double>(),
                    row["count"].get<unsigned int>(), row["minimum"].get<double>(),
                    row["median"].get<double>(), row["floorMinimum"].get<double>(),
                    row["floorMedian"].get<double>(),
                    row["minimum"].get<double>() / row["floorMinimum"].get<double>());
    if (jsonFile.empty())
        return;
    std::ofstream file(jsonFile);
    if (!(file << rows << '\n').flush())
        throw std::runtime_error("cannot write " + jsonFile);
}

} // namespace audlmd::bench
