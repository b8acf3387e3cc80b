#!/bin/sh
# check.sh PROGRAM: runs the host program, and compares what it prints.
set -eu
printed=$("$1")
[ "$printed" = "$(printf '32767\n-16384\n8192')" ] || { echo "The host printed: $printed" >&2; exit 1; }
