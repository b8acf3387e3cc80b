#include "bench/Commands.hpp"
#include "bench/Report.hpp"
#include "bench/Request.hpp"
#include "bench/Yardsticks.hpp"
#include "model/OutputTypes.hpp"

#include <cmath>
#include <cstdint>
#include <cstdio>

namespace audlmd::bench {
namespace {

struct Measured {
    unsigned int code;
    std::size_t outputType;
    double speed;
    Timing render;
    Timing floor;
};

std::vector<Measured> expand(const Selection& selection) {
    std::vector<Measured> all;
    for (unsigned int code : selection.codes) {
        const bool converts =
            Aud::Render::decodeModeCode(code).srcStage != Aud::Render::ConversionStage::none;
        const std::vector<double> speeds = converts ? selection.speeds : std::vector{1.0};
        for (std::size_t outputType : selection.outputTypes)
            for (double speed : speeds)
                all.push_back({code, outputType, speed, {}, {}});
    }
    return all;
}

void measure(Measured& it, Cache& cache, const Selection& selection, std::vector<std::uint8_t>& buffer) {
    Request request(it.code, cache, static_cast<unsigned int>(selection.samples * it.speed), it.speed);
    Floor floor(request, cache.segmentAt(request.start()));
    for (unsigned int i = 0; i < selection.repetitions; ++i) {
        std::uint8_t* position = buffer.data();
        it.render.repeat([&] {
            model::renderThroughTable(it.outputType, it.code, request.params(), position, selection.samples);
        });
        it.floor.repeat([&] { floor.run(selection.samples); });
    }
}

} // namespace

int measureModes(const Selection& selection) {
    Cache cache(testMaterial());
    std::vector<Measured> all = expand(selection);
    std::size_t done = 0;
    for (const Measured& it : all) {
        showProgress("verified", ++done, all.size());
        const auto difference = differenceFromModel(it.code, it.outputType, cache, it.speed);
        if (difference) {
            std::fprintf(stderr,
                         "audlmd-bench: mode %u to %s differs from the model in %s; nothing is measured\n",
                         it.code, model::outputTypeNames[it.outputType], difference->c_str());
            return 1;
        }
    }

    std::vector<std::uint8_t> buffer(std::size_t{4} * selection.samples);
    done = 0;
    for (unsigned int round = 0; round < selection.rounds; ++round)
        for (Measured& it : all) {
            measure(it, cache, selection, buffer);
            showProgress("measured", ++done, all.size() * selection.rounds);
        }

    nlohmann::json rows = nlohmann::json::array();
    for (const Measured& it : all) {
        nlohmann::json row = figures(it.render, it.floor, selection.samples);
        row.update({{"code", it.code},
                    {"output", model::outputTypeNames[it.outputType]},
                    {"speed", it.speed},
                    {"count", selection.samples}});
        rows.push_back(row);
    }
    report(rows, selection.json);
    return 0;
}

} // namespace audlmd::bench
