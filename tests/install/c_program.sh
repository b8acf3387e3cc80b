#!/bin/sh
# c_program.sh PREFIX LIBDIR PAGE: builds the page's program as C99 with pkg-config's flags, without a warning, and runs it on a
# sound of two seconds; the header must pass as C++, too.
set -eu
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
export PKG_CONFIG_PATH="$1/$2/pkgconfig" LD_LIBRARY_PATH="$1/$2"
sed -n '/^```c$/,/^```$/p' "$3" | sed '/^```/d' >"$folder/last.c"
test -s "$folder/last.c"
# Flags are words: no quotes.
cc -std=c99 -Wall -Wextra -Wpedantic -Werror "$folder/last.c" $(pkg-config --cflags --libs audlmd-c) -o "$folder/last"
c++ -std=c++98 -Wall -Wextra -Wpedantic -Wno-long-long -Werror -fsyntax-only -x c++ $(pkg-config --cflags audlmd-c) - <<END
#include <audlmd.h>
END
head -c 192000 /dev/zero |
    "$1/bin/audlmd" render - --input-format s16 --input-rate 48000 --input-channels 1 -o "$folder/take.wav" --quiet
test "$("$folder/last" "$folder/take.wav")" = "96000 of 96000 frames"
! "$folder/last" "$folder/gone.wav" 2>"$folder/errors"
grep -q "gone.wav" "$folder/errors"
PYTHONPATH=$(dirname "$(find "$1" -type d -name audlmd -path '*-packages/*')") AUDLMD_LIBRARY="$1/$2/libaudlmd_c.so.1" \
    PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3 -m audlmd | grep -q " $1/"
