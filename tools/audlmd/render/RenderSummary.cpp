#include "tools/audlmd/render/RenderSummary.hpp"

#include "host/words/Text.hpp"
#include "tools/audlmd/Progress.hpp"
#include "tools/audlmd/mix/MixReportJson.hpp"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <iomanip>
#include <sstream>

namespace audlmd::command {

std::vector<std::string> RenderSummary::lines(bool quiet) const {
    std::vector<std::string> lines;
    for (const std::string& words : overloadWords)
        for (std::size_t channel = 0; channel < overloads.size(); ++channel)
            lines.push_back(channelOverloadLine(words, channel, overloads[channel], sampleRate));
    if (levels)
        lines.push_back(levels->shortfall);
    if (quiet && underrunSamples == 0)
        return lines;
    std::ostringstream text;
    text << std::fixed << "rendered " << frames << " samples on "
         << words::counted(static_cast<std::uint64_t>(channels), "channel") << " (" << std::setprecision(3)
         << static_cast<double>(frames) / sampleRate << " s) in " << seconds << " s: " << std::setprecision(1)
         << timesRealTime(frames, sampleRate, seconds) << " times real time; underruns: " << underrunSamples
         << " samples in " << words::counted(underrunEpisodes, "episode");
    lines.push_back(text.str());
    if (levels)
        lines.push_back(levelsLine(*levels));
    return lines;
}

nlohmann::json RenderSummary::json() const {
    nlohmann::json json{{"output", outputs.front().path},
                        {"format", outputFormat(outputs.front().format).name},
                        {"outputs", outputsJson(outputs)},
                        {"sampleRate", sampleRate},
                        {"frames", frames},
                        {"seconds", seconds},
                        {"underrunSamples", underrunSamples},
                        {"underrunEpisodes", underrunEpisodes},
                        {"channelCount", channels},
                        {"channels", channelsJson(overloads, outputs.front().clips)}};
    if (levels)
        json["levels"] = levelsJson(*levels);
    return json;
}

} // namespace audlmd::command
