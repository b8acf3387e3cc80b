#include "bench/Commands.hpp"
#include "bench/Report.hpp"
#include "bench/Request.hpp"
#include "bench/Yardsticks.hpp"
#include "ole/Aud/SampleFormats.hpp"
#include "ole/Orv/OrvModeMeta"

#include <array>

namespace audlmd::bench {
namespace {

/// Calls that are timed together, because one is too short.
constexpr unsigned int callsAtOnce = 1000;
constexpr unsigned int longCall = 64;

unsigned int countLayers(const Aud::Render::ModeFields& fields) {
    const Aud::Render::EnvelopeStage stage = Aud::Render::envelopeStages[fields.envelopeStage];
    const unsigned int filterAndOuterLevel = 2;
    return filterAndOuterLevel + (stage.envelope != Aud::Render::EnvelopeKind::none ? 1 : 0) +
           (stage.middleLevel != Aud::Render::MiddleLevelKind::absent ? 1 : 0);
}

/// One output type is enough: the cost of a call besides its samples is the same in all of them.
using Out = Aud::SampleF32*;

/// The figures of one mode, for calls of `count` samples.
nlohmann::json measureMode(unsigned int code, unsigned int count, Cache& cache, unsigned int repetitions) {
    const Aud::Render::ModeFields fields = Aud::Render::decodeModeCode(code);
    const auto render = Aud::LoopModesDespatcherInstance<Out>::get().find(code);
    const ChainBuilder buildByHand =
        handMadeChain(fields.direction == Aud::Render::Direction::forward, countLayers(fields));
    std::array<Aud::SampleF32, longCall> buffer{};
    Request request(code, cache, callsAtOnce * longCall, 1.0);
    Floor floor(request, cache.segmentAt(request.start()));
    Timing calls;
    Timing byHand;
    for (unsigned int i = 0; i < repetitions; ++i) {
        calls.repeat([&] {
            for (unsigned int call = 0; call < callsAtOnce; ++call) {
                Out out = buffer.data();
                render(request.params(), out, count);
            }
        });
        byHand.repeat([&] {
            for (unsigned int call = 0; call < callsAtOnce; ++call) {
                buildByHand(request.params());
                if (count != 0)
                    floor.run(count);
            }
        });
    }
    nlohmann::json row = figures(calls, byHand, callsAtOnce);
    row.update({{"code", code}, {"output", "F32"}, {"speed", 1.0}, {"count", count}});
    return row;
}

} // namespace

int measureCalls(const Selection& selection) {
    Cache cache(testMaterial());
    nlohmann::json rows = nlohmann::json::array();
    std::size_t done = 0;
    for (unsigned int code : selection.codes) {
        showProgress("measured", ++done, selection.codes.size());
        if (Aud::Render::decodeModeCode(code).srcStage != Aud::Render::ConversionStage::none)
            continue;
        for (unsigned int count : {0U, longCall})
            rows.push_back(measureMode(code, count, cache, selection.rounds * selection.repetitions));
    }
    report(rows, selection.json);
    return 0;
}

} // namespace audlmd::bench
