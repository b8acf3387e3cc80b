// What loading the library does to the host.

#include "model/Model.hpp"
#include "model/OutputTypes.hpp"
#include "ole/Orv/OrvModeMeta"
#include "tests/scripted_host/ScriptedHost.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <dlfcn.h>
#include <set>
#include <utility>

namespace audlmd::test {
namespace {

using model::forEachOutputType;
using model::outputTypeCount;

using Slots = std::vector<const void*>;

template <class Out>
auto& table() {
    return Aud::LoopModesDespatcherInstance<Out>::get();
}

std::array<Slots, outputTypeCount> allSlots() {
    std::array<Slots, outputTypeCount> all;
    forEachOutputType([&]<class Out>(std::size_t number) {
        for (unsigned long code = 0; code < table<Out>().size(); ++code)
            all[number].push_back(reinterpret_cast<const void*>(table<Out>().find(code)));
    });
    return all;
}

void emptyTables() {
    forEachOutputType([]<class Out>(std::size_t) { table<Out>() = {}; });
}

void occupySlot(std::size_t outputType, unsigned int code) {
    forEachOutputType([&]<class Out>(std::size_t number) {
        if (number == outputType)
            table<Out>().registerFunction(code,
                                          [](Aud::Render::IteratorCreationParams&, Out&, unsigned int) {});
    });
}

/// Whether exactly the first `count` codes of the order are registered in all tables.
bool holdExactly(const std::array<Slots, outputTypeCount>& tables, std::size_t count) {
    const auto& order = model::registrationOrder();
    const std::set<unsigned int> expected(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(count));
    return std::all_of(tables.begin(), tables.end(), [&](const Slots& slots) {
        std::set<unsigned int> set;
        for (unsigned int code = 0; code < slots.size(); ++code)
            if (slots[code] != nullptr)
                set.insert(code);
        return set == expected;
    });
}

/// The library, loaded into a host that has seen nothing yet.
class Load : public testing::Test {
protected:
    void load() {
        emptyTables();
        LoadLog::get().settingsRead.clear();
        library_ = dlopen(AUDLMD_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library_, nullptr) << dlerror();
    }
    void unload() {
        if (library_ != nullptr) {
            EXPECT_EQ(dlclose(library_), 0);
        }
        library_ = nullptr;
    }
    void TearDown() override {
        unload();
        LoadLog::get() = {};
    }

    template <class Symbol>
    Symbol* symbol(const char* name) {
        return reinterpret_cast<Symbol*>(dlsym(library_, name));
    }

private:
    void* library_ = nullptr;
};

TEST_F(Load, FillsTheTablesUnitByUnitAndReadsTheSettingLast) {
    LoadLog& log = LoadLog::get();
    std::vector<std::vector<std::uint32_t>> formatsOfUnits;
    log.onFormat = [&](std::uint32_t number) {
        EXPECT_TRUE(log.settingsRead.empty());
        if (formatsOfUnits.empty() || formatsOfUnits.back().front() == number) {
            const std::size_t before = std::min<std::size_t>(100 * formatsOfUnits.size(), 864);
            EXPECT_TRUE(holdExactly(allSlots(), before)) << "before unit " << formatsOfUnits.size() + 1;
            formatsOfUnits.emplace_back();
        }
        formatsOfUnits.back().push_back(number);
    };
    ASSERT_NO_FATAL_FAILURE(load());
    log.onFormat = nullptr;

    EXPECT_TRUE(holdExactly(allSlots(), 864));
    ASSERT_EQ(formatsOfUnits.size(), 10U);
    for (const auto& formats : formatsOfUnits)
        EXPECT_EQ(formats, (std::vector<std::uint32_t>{0, 100, 200, 300, 400, 500, 600}));
    // One read a comparison, and one of the value that passes both.
    const std::pair<std::string, double> read("AudioPlaybackSpeedLimit", 6.0);
    EXPECT_EQ(log.settingsRead, decltype(log.settingsRead)(3, read));

    std::set<const void*> functions;
    for (const Slots& slots : allSlots()) {
        EXPECT_EQ(slots.size(), 1752U);
        functions.insert(slots.begin(), slots.end());
    }
    functions.erase(nullptr);
    EXPECT_EQ(functions.size(), 12096U);

    EXPECT_GT(log.announcedFormats, 0);
    unload();
    EXPECT_EQ(log.announcedFormats, 0);
}

TEST_F(Load, ReportsTheVersionOfTheProject) {
    ASSERT_NO_FATAL_FAILURE(load());
    auto* const version = symbol<const char*()>("_Z19audLMDDllVersionStrv");
    ASSERT_NE(version, nullptr);
    EXPECT_STREQ(version(), AUDLMD_PROJECT_VERSION);
    EXPECT_EQ(std::count(version(), version() + std::string_view(version()).size(), '.'), 3);
}

class SpeedLimit : public Load,
                   public testing::WithParamInterface<std::tuple<double, double, std::size_t>> {};

TEST_P(SpeedLimit, IsTheSettingWithinItsLimits) {
    const auto [setting, limit, reads] = GetParam();
    if (setting != 0.0)
        LoadLog::get().speedLimitSetting = setting;
    ASSERT_NO_FATAL_FAILURE(load());
    EXPECT_EQ(*symbol<double>("cfgAudioPlaybackSpeedLimit"), limit);
    EXPECT_EQ(LoadLog::get().settingsRead.size(), reads);
}

INSTANTIATE_TEST_SUITE_P(Settings, SpeedLimit,
                         testing::Values(std::tuple(0.0, 6.0, 3U), std::tuple(10.0, 8.0, 1U),
                                         std::tuple(8.0, 8.0, 3U), std::tuple(1.0, 1.5, 2U),
                                         std::tuple(1.5, 1.5, 3U), std::tuple(2.5, 2.5, 3U)));

/// Occupies one slot, loads, and reports how far registration came: as the exit status of this process,
/// because a failed load leaves the loader in no state to go on.
[[noreturn]] void loadWithOccupiedSlot(std::size_t place, std::size_t outputType) {
    emptyTables();
    const auto& order = model::registrationOrder();
    occupySlot(outputType, order[place]);
    const auto* const occupied = allSlots()[outputType][order[place]];
    // Through a pointer, because dlopen is declared as if it could not throw.
    void* (*const volatile open)(const char*, int) = &dlopen;
    try {
        open(AUDLMD_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    } catch (const Orv::Exception::RuntimeError& error) {
        const bool right =
            std::string_view(error.message()) == "Redefintion of previously defined mode code!" &&
            std::string_view(error.file()) == "ole/Orv/OrvModeMeta" && error.line() == 95;
        auto tables = allSlots();
        const bool firstStays = tables[outputType][order[place]] == occupied;
        // This code is in the tables before the occupied one, and the next code in none.
        bool orderIsRight = true;
        for (std::size_t i = 0; i < outputTypeCount; ++i) {
            tables[i].resize(1752);
            orderIsRight = orderIsRight && (tables[i][order[place]] != nullptr) == (i <= outputType);
            tables[i][order[place]] = nullptr;
        }
        std::_Exit(right && firstStays && orderIsRight && holdExactly(tables, place) ? 0 : 1);
    } catch (...) {
        std::_Exit(2);
    }
    std::_Exit(3);
}

TEST(LoadDeathTest, FailsWhereACodeIsAlreadyRegistered) {
    for (std::size_t place : {0U, 1U, 2U, 6U, 12U, 13U, 37U, 99U, 100U, 431U, 432U, 799U, 800U, 863U})
        EXPECT_EXIT(loadWithOccupiedSlot(place, place % outputTypeCount), testing::ExitedWithCode(0), "")
            << "at place " << place;
}

} // namespace
} // namespace audlmd::test
