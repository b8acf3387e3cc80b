#!/bin/sh
# link.sh COMPILER "FLAGS" LIBRARY HOST: links a program that names the speed limit, and expects the value that the
# library sets while it is being loaded, wherever the variable then is.
set -eu
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
# Flags are words: no quotes.
"$1" -O2 $2 "$(dirname "$0")/speed_limit.cpp" -o "$folder/program" -Wl,--no-as-needed "$3" "$4" \
    -Wl,-rpath,"$(dirname "$3")"
printed=$(AUDLMD_AudioPlaybackSpeedLimit=4 "$folder/program")
[ "$printed" = 4 ] || { echo "The program printed $printed, not 4" >&2; exit 1; }
