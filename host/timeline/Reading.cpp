#include "host/timeline/Reading.hpp"

#include "host/words/Text.hpp"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <exception>
#include <filesystem>

namespace audlmd::timeline {

bool isElsewhere(std::string_view medium) {
    const bool hasDrive = medium.size() > 2 && std::isalpha(static_cast<unsigned char>(medium[0])) != 0 &&
                          medium[1] == ':' && (medium[2] == '/' || medium[2] == '\\');
    return hasDrive || medium.find("://") != std::string_view::npos;
}

const MediaAnswers::Answer& MediaAnswers::of(const std::string& media) {
    const auto [entry, isNew] = answers_.try_emplace(media);
    Answer& answer = entry->second;
    if (!isNew || !options_.media)
        return answer;
    try {
        answer.facts = options_.media(media);
        if (answer.facts && answer.facts->sampleRate <= 0)
            answer = {std::nullopt, "it has no sample rate"};
    } catch (const std::exception& error) {
        answer.problem = words::printable(error.what(), std::string_view::npos);
    }
    return answer;
}

void Reading::fail(const std::string& sentence) const {
    throw TimelineError(where.text(), sentence);
}

void Reading::note(std::string text, std::optional<TimelineSample> sample, bool silences) const {
    timeline.notes.push_back({where.text(), std::move(text), sample, silences});
}

std::string Reading::pathOf(const std::string& medium) const {
    const std::filesystem::path path(medium);
    return medium.empty() || path.is_absolute() || isElsewhere(medium)
               ? medium
               : (options.folder / path).lexically_normal().string();
}

std::optional<std::int64_t> Reading::lengthOf(const std::string& medium, const Relabel& relabel) const {
    const std::optional<MediaFacts>& facts = media.of(medium).facts;
    if (!facts)
        return std::nullopt;
    const double scale = timeline.sampleRate / relabel.rateOf(facts->sampleRate);
    return std::llround(
        std::min(static_cast<double>(facts->length) * scale, static_cast<double>(farthestPosition)));
}

} // namespace audlmd::timeline
