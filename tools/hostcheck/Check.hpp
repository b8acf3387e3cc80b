#pragma once

#include "tools/hostcheck/HostUnderCheck.hpp"

#include <sstream>
#include <string>

// What the files of rules share. A rule is a function that throws where it is broken.
namespace audlmd {

/// What was seen of a rule that is broken.
struct Broken {
    std::string seen;
};
/// Why a rule cannot be checked.
struct Unchecked {
    std::string why;
};

template <class... Parts>
std::string inWords(const Parts&... parts) {
    std::ostringstream text;
    (text << ... << parts);
    return text.str();
}

/// Throws Broken with the text of the parts unless the condition holds.
template <class... Parts>
void expect(bool condition, const Parts&... parts) {
    if (!condition)
        throw Broken{inWords(parts...)};
}

void checkLayout(HostUnderCheck&);
void checkSettings(HostUnderCheck&);
void checkFormats(HostUnderCheck&);
void checkCounts(HostUnderCheck&);
void checkHeap(HostUnderCheck&);
void checkNotes(HostUnderCheck&);
void checkTables(HostUnderCheck&);

void checkIdentity(HostUnderCheck&);
void checkEmpty(HostUnderCheck&);
void checkStartForwards(HostUnderCheck&);
void checkStartBackwards(HostUnderCheck&);
void checkWalkForwards(HostUnderCheck&);
void checkWalkBackwards(HostUnderCheck&);
void checkWaiting(HostUnderCheck&);
void checkGearing(HostUnderCheck&);
void checkUnknown(HostUnderCheck&);

void checkStatus(HostUnderCheck&);
void checkEvents(HostUnderCheck&);
void checkUnderruns(HostUnderCheck&);
void checkHolders(HostUnderCheck&);

void checkSection(HostUnderCheck&);
void checkCurves(HostUnderCheck&);
void checkLevelsForwards(HostUnderCheck&);
void checkLevelsBackwards(HostUnderCheck&);

void checkTogether(HostUnderCheck&);
void checkRender(HostUnderCheck&);

} // namespace audlmd
