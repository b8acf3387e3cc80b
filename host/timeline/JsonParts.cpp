#include "host/timeline/JsonParts.hpp"

#include <cmath>
#include <exception>
#include <filesystem>
#include <stdexcept>

namespace audlmd::timeline {
namespace {

/// A text is read by whoever calls the reader, so that files and the command line share one form.
EqualiserBand bandIn(const Json& value, const Fields& parent, const ReadOptions& options) {
    if (value.is_string()) {
        if (!options.band)
            parent.fail("equaliser", "must hold objects with kind, frequency, gain and q");
        try {
            return options.band(value.get_ref<const std::string&>());
        } catch (const std::exception& error) {
            parent.fail("equaliser", "cannot be read: " + printable(error.what(), 200));
        }
    }
    if (!value.is_object())
        parent.fail("equaliser", "must be a list of bands");
    // Wide limits: only the equaliser knows which numbers it can have.
    constexpr double most = 1e9;
    Fields fields(value, parent.where());
    EqualiserBand band;
    band.kind = fields.word("kind", bandWords).value_or(band.kind);
    band.frequency = fields.number("frequency", band.frequency, 0.0, most);
    band.gainDb = fields.number("gain", band.gainDb, -most, most);
    band.q = fields.number("q", band.q, 0.0, most);
    fields.finish();
    return band;
}

} // namespace

std::vector<EqualiserBand> equaliserIn(Fields& fields, const ReadOptions& options) {
    std::vector<EqualiserBand> bands;
    if (const Json* list = fields.list("equaliser"))
        for (const Json& value : *list)
            bands.push_back(bandIn(value, fields, options));
    return bands;
}

std::optional<Routing> routingIn(Fields& fields, std::size_t channels) {
    const Json* rows = fields.list("routing");
    if (rows == nullptr)
        return std::nullopt;
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

void requireBands(const std::vector<EqualiserBand>& bands, double sampleRate, const Where& where) {
    if (bands.size() > equaliserBandCount)
        where.fail("the equaliser has " + std::to_string(bands.size()) + " bands; five is the most");
    try {
        for (const EqualiserBand& band : bands)
            sectionOf(band, sampleRate);
    } catch (const std::invalid_argument& error) {
        where.fail(std::string("equaliser: ") + error.what());
    }
}

std::string pathFrom(const std::string& media, const ReadOptions& options) {
    const std::filesystem::path path(media);
    return media.empty() || path.is_absolute() ? media : (options.folder / path).lexically_normal().string();
}

} // namespace audlmd::timeline
