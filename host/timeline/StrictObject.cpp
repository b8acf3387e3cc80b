#include "host/timeline/StrictObject.hpp"

#include "host/timeline/TimelineError.hpp"
#include "host/words/StripWords.hpp"
#include "host/words/Text.hpp"
#include "host/words/Times.hpp"

#include <cmath>
#include <stdexcept>

namespace audlmd::timeline {

StrictObject::StrictObject(const Json& object, const Reading& reading) : object_(object), reading_(reading) {
    if (!object.is_object())
        reading_.fail("an object in braces is missing here");
}

const Json* StrictObject::find(const std::string& key) {
    // Noted even where the member is missing: the key is one that somebody asked for.
    known_.insert(key);
    return member(object_, key);
}

const Json* StrictObject::list(const std::string& key) {
    const Json* found = find(key);
    if (found != nullptr && !found->is_array())
        fail(key, "must be a list");
    return found;
}

std::string StrictObject::text(const std::string& key, const std::string& otherwise) {
    const Json* found = find(key);
    if (found == nullptr)
        return otherwise;
    if (!found->is_string())
        fail(key, "must be a text");
    return found->get<std::string>();
}

bool StrictObject::flag(const std::string& key, bool otherwise) {
    const Json* found = find(key);
    if (found == nullptr)
        return otherwise;
    if (!found->is_boolean())
        fail(key, "must be true or false");
    return found->get<bool>();
}

double StrictObject::number(const std::string& key, double otherwise, double lowest, double highest) {
    const Json* found = find(key);
    if (found == nullptr)
        return otherwise;
    if (!found->is_number() || !(found->get<double>() >= lowest && found->get<double>() <= highest))
        fail(key, "must be a number from " + Json(lowest).dump() + " to " + Json(highest).dump());
    return found->get<double>();
}

std::int64_t StrictObject::whole(const std::string& key, std::int64_t otherwise, std::int64_t lowest,
                                 std::int64_t highest) {
    const Json* found = find(key);
    if (found == nullptr)
        return otherwise;
    if (!found->is_number_integer() || found->get<std::int64_t>() < lowest ||
        found->get<std::int64_t>() > highest)
        fail(key, "must be a whole number from " + std::to_string(lowest) + " to " + std::to_string(highest));
    return found->get<std::int64_t>();
}

double StrictObject::decibels(const std::string& key, double otherwise, double highest) {
    const Json* found = find(key);
    if (found == nullptr)
        return otherwise;
    const std::optional<double> value = decibelsOf(*found, highest);
    if (!value)
        fail(key, "must be decibels up to " + Json(highest).dump() + ", or \"-inf\" for silence");
    return *value;
}

void StrictObject::finish() const {
    for (const auto& [key, value] : object_.items())
        if (!known_.contains(key))
            fail(key, "is not known here");
}

void StrictObject::fail(const std::string& key, const std::string& sentence) const {
    reading_.fail("\"" + words::printable(key) + "\" " + sentence);
}

namespace {

EqualiserBand bandIn(const Json& value, const StrictObject& parent) {
    if (value.is_string()) {
        try {
            return words::bandIn(value.get_ref<const std::string&>());
        } catch (const std::invalid_argument& error) {
            parent.fail("equaliser", "cannot be read: equaliser: " + words::printable(error.what(), 200));
        }
    }
    if (!value.is_object())
        parent.fail("equaliser", "must be a list of bands");
    // Wide limits: only the equaliser knows which numbers it can have.
    constexpr double most = 1e9;
    StrictObject fields(value, parent.reading());
    EqualiserBand band;
    band.kind = fields.word("kind", words::bandWords).value_or(band.kind);
    band.frequency = fields.number("frequency", band.frequency, 0.0, most);
    band.gainDb = fields.number("gain", band.gainDb, -most, most);
    band.q = fields.number("q", band.q, 0.0, most);
    fields.finish();
    return band;
}

} // namespace

std::vector<EqualiserBand> equaliserIn(StrictObject& fields) {
    std::vector<EqualiserBand> bands;
    if (const Json* list = fields.list("equaliser"))
        for (const Json& value : *list)
            bands.push_back(bandIn(value, fields));
    return bands;
}

Relabel relabelIn(StrictObject& fields) {
    const Json* found = fields.find("relabel");
    if (found == nullptr)
        return {};
    const std::optional<Relabel> relabel =
        found->is_string() ? words::relabelIn(found->get_ref<const std::string&>()) : std::nullopt;
    if (!relabel)
        fields.fail("relabel", std::string("must be a text with ") + words::relabelSyntax);
    return *relabel;
}

std::optional<Routing> routingIn(StrictObject& fields) {
    const Json* rows = fields.list("routing");
    if (rows == nullptr)
        return std::nullopt;
    const std::size_t channels = fields.reading().timeline.channels;
    const auto refuse = [&] {
        fields.fail("routing", "must have " + std::to_string(channels) +
                                   " rows of gains, one for each output channel, all equally long");
    };
    Routing routing;
    for (const Json& row : *rows) {
        if (!row.is_array() || row.empty())
            refuse();
        std::vector<float>& gains = routing.rows.emplace_back();
        for (const Json& gain : row) {
            if (!gain.is_number() || std::abs(gain.get<double>()) > 1e6)
                refuse();
            gains.push_back(gain.get<float>());
        }
        if (gains.size() != routing.rows.front().size())
            refuse();
    }
    if (routing.rows.size() != channels)
        refuse();
    return routing;
}

} // namespace audlmd::timeline
