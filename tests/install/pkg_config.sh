#!/bin/sh
# pkg_config.sh COMPILER PREFIX LIBDIR: builds the host program with pkg-config's flags, and checks it.
set -eu
here=$(dirname "$0")
program=$(mktemp)
trap 'rm -f "$program"' EXIT
export PKG_CONFIG_PATH="$2/$3/pkgconfig"
# Flags are words: no quotes.
"$1" -std=c++20 "$here/host.cpp" $(pkg-config --cflags --libs audlmd audlmd-host) -o "$program"
LD_LIBRARY_PATH="$2/$3" sh "$here/check.sh" "$program"
