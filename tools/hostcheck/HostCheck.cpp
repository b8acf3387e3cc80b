#include "tools/hostcheck/HostCheck.hpp"

#include "ole/Orv/Exception.hpp"
#include "tools/hostcheck/Check.hpp"
#include "tools/hostcheck/Rules.hpp"

#include <algorithm>
#include <exception>
#include <ostream>

namespace audlmd {
namespace {

struct Check {
    std::string_view name;
    void (*function)(HostUnderCheck&);
};

constexpr auto checks = std::to_array<Check>({
    // Whoever gets here has found them all.
    {"operations", [](HostUnderCheck&) {}},
    {"layout", checkLayout},
    {"settings", checkSettings},
    {"formats", checkFormats},
    {"counts", checkCounts},
    {"heap", checkHeap},
    {"notes", checkNotes},
    {"tables", checkTables},
    {"identity", checkIdentity},
    {"empty", checkEmpty},
    {"start-forwards", checkStartForwards},
    {"start-backwards", checkStartBackwards},
    {"walk-forwards", checkWalkForwards},
    {"walk-backwards", checkWalkBackwards},
    {"waiting", checkWaiting},
    {"gearing", checkGearing},
    {"unknown", checkUnknown},
    {"status", checkStatus},
    {"events", checkEvents},
    {"underruns", checkUnderruns},
    {"holders", checkHolders},
    {"section", checkSection},
    {"curves", checkCurves},
    {"levels-forwards", checkLevelsForwards},
    {"levels-backwards", checkLevelsBackwards},
    {"together", checkTogether},
    {"render", checkRender},
});
static_assert(std::ranges::equal(checks, hostRules, {}, &Check::name, &Rule::name));

} // namespace

Verdict checkRule(std::size_t rule) {
    try {
        checks[rule].function(hostUnderCheck());
        return {Outcome::kept, {}};
    } catch (const Broken& broken) {
        return {Outcome::broken, broken.seen};
    } catch (const Unchecked& unchecked) {
        return {Outcome::unchecked, unchecked.why};
    } catch (const std::exception& thrown) {
        return {Outcome::broken, inWords("An operation threw: ", thrown.what())};
    } catch (const Orv::Exception::Base& thrown) {
        return {Outcome::broken, inWords("An operation threw: ", thrown.message())};
    } catch (...) {
        return {Outcome::broken, "An operation threw something that is no exception class."};
    }
}

int checkHost(std::ostream& report) {
    int broken = 0;
    for (std::size_t rule = 0; rule < hostRules.size(); ++rule) {
        const Verdict verdict = waits(rule, broken) ? afterOthers() : checkRule(rule);
        broken += verdict.outcome == Outcome::broken;
        report << toText(hostRules[rule], verdict) << std::flush;
        if (broken != 0 && rule < firstRules)
            break;
    }
    return broken;
}

} // namespace audlmd
