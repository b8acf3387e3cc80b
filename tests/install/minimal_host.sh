#!/bin/sh
# minimal_host.sh PREFIX LIBDIR: types what docs/hosts.md says about the minimal host, beside its files, and expects every
# rule to be kept.
set -eu
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cp "$1"/share/doc/audlmd/docs/minimal_host*.cpp "$folder"
export PKG_CONFIG_PATH="$1/$2/pkgconfig" PATH="$1/bin:$PATH"
commands=$(sed -n '/^    g++ /p; /^    audlmd-host-check /p' "$1/share/doc/audlmd/docs/hosts.md")
cd "$folder"
echo "$commands" | sh -eux > report || { cat report; exit 1; }
rules=$(audlmd-host-check --list | wc -l)
test "$(grep -c '^kept' report)" -eq "$rules" || { cat report; exit 1; }
