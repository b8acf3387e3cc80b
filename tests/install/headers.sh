#!/bin/sh
# headers.sh COMPILER PREFIX INCLUDEDIR: compiles one unit that includes every installed header.
set -eu
cd "$2/$3/audlmd"
# What only our sources need: a user may not have it.
if grep -rl nlohmann .; then exit 1; fi
find . -type f | sort | sed 's|^\./\(.*\)|#include "\1"|' | "$1" -std=c++20 -fsyntax-only -Wall -Wextra -Werror -I. -x c++ -
