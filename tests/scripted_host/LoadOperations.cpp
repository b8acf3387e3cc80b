// The host operations of loading the library.

#include "contract/LoadServices.hpp"
#include "model/OutputTypes.hpp"
#include "ole/Orv/OrvModeMeta"
#include "tests/scripted_host/ScriptedHost.hpp"

#include <tuple>

using audlmd::test::LoadLog;

LoadLog& LoadLog::get() {
    static LoadLog log;
    return log;
}

double config_double(const char* key, double defaultValue) {
    LoadLog& log = LoadLog::get();
    log.settingsRead.emplace_back(key, defaultValue);
    return log.speedLimitSetting.value_or(defaultValue);
}

Orv::Image::FormatUID::FormatUID(std::uint32_t number) : number_(number) {
    LoadLog& log = LoadLog::get();
    ++log.announcedFormats;
    if (log.onFormat)
        log.onFormat(number);
}

Orv::Image::FormatUID::~FormatUID() {
    --LoadLog::get().announcedFormats;
}

template <class Out>
auto Aud::LoopModesDespatcherInstance<Out>::get() -> typename Render::LoopModesDespatch::Types<Out>::Table& {
    static typename Render::LoopModesDespatch::Types<Out>::Table table;
    return table;
}

namespace {

/// Instantiating it emits the fourteen tables.
template <class... Outs>
auto emitTables(std::tuple<Outs...>*) {
    return std::tuple{&Aud::LoopModesDespatcherInstance<Outs>::get...};
}
[[gnu::used]] const auto tables = emitTables(static_cast<audlmd::model::OutputTypes*>(nullptr));

} // namespace
