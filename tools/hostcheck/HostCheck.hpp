#pragma once

#include <cstddef>
#include <iosfwd>

namespace audlmd {

struct Verdict;

/// Checks the host that the program is linked with, rule by rule, and writes one line for each. Returns how
/// many are broken. The trap: a host that crashes or never returns takes the program along; audlmd-host-check
/// gives every rule a process and twenty seconds.
/// \snippet host_check.cpp check
int checkHost(std::ostream& report);

/// Checks one of the host's rules, by its place in hostRules. Throws nothing.
Verdict checkRule(std::size_t rule);

} // namespace audlmd
