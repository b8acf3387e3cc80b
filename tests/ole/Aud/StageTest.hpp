#pragma once

#include "tests/scripted_host/ScriptedHost.hpp"

#include <gtest/gtest.h>

#include <cstdint>

namespace audlmd::test {

/// Stands below a stage: its samples are 10, 20, 30 and so on.
struct Tens {
    std::int64_t at = 0;

    float operator*() const { return static_cast<float>(10 * (at + 1)); }
    Tens& operator++() {
        ++at;
        return *this;
    }
    std::int64_t position() const { return at; }
};

/// A stage, with a host whose curves show the index of the node that a u-value finds: nodes lie 0.001 apart
/// in the mixer's curve, 0.01 in the constant-power curve.
class StageTest : public testing::Test {
protected:
    StageTest() {
        ScriptedHost::current = &host;
        host.record = &record;
        useCurveTables(0);
    }
    ~StageTest() override { ScriptedHost::current = nullptr; }

    ScriptedHost host;
    Aud::Render::PerSourceRecord record;
};

} // namespace audlmd::test
