#include "../minimal_host_check.cpp" // NOLINT: one file to compile
#include "tools/hostcheck/HostCheck.hpp"

#include <iostream>

//! [check]
/// Checks the host that the program is linked with, as a test of the program may.
int main() { return audlmd::checkHost(std::cout) == 0 ? 0 : 1; }
//! [check]
