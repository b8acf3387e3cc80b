#!/bin/sh
# headers.sh COMPILER PREFIX INCLUDEDIR: compiles one unit that includes every installed header, each of which shows an example.
set -eu
cd "$2/$3/audlmd"
# What only our sources need: a user may not have it.
if grep -rl nlohmann .; then exit 1; fi
without=$(grep -rL '\\snippet [a-z_]*\.' --include='*.h*' ..) || true
[ -z "$without" ] || { echo "No example: $without" >&2; exit 1; }
find . -type f | sort | sed 's|^\./\(.*\)|#include "\1"|' | "$1" -std=c++20 -fsyntax-only -Wall -Wextra -Werror -I. -x c++ -
