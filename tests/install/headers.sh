#!/bin/sh
# headers.sh COMPILER PREFIX INCLUDEDIR: compiles one unit that includes every installed header.
set -eu
cd "$2/$3/audlmd"
find . -type f | sort | sed 's|^\./\(.*\)|#include "\1"|' | "$1" -std=c++20 -fsyntax-only -Wall -Wextra -Werror -I. -x c++ -
