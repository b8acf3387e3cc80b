# check.sh LIBRARY HEADERS BASELINE [renew]: fails where the binary interface of a library differs from the baseline other
# than by additions; with "renew", writes the baseline. Status 77, a skipped test, without abigail-tools.
set -eu
library=$1 headers=$2 baseline=$3
command -v abidw >/dev/null && command -v xz >/dev/null || {
    echo "abigail-tools and xz-utils are not installed: scripts/setup check"
    exit 77
}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

abidw --headers-dir "$headers" --drop-private-types --exported-interfaces-only --no-architecture --no-comp-dir-path \
    --no-show-locs --no-corpus-path --out-file "$work/now" "$library"
if [ "${4:-}" = renew ]; then
    xz -9 <"$work/now" >"$baseline"
    exit
fi
xz -d <"$baseline" >"$work/before"
abidiff --no-added-syms "$work/before" "$work/now" || {
    echo "A program that was built against the baseline would not work with $library any more. CONTRIBUTING.md tells when" \
        "that may be, and how to renew the baseline: sh $0 $library $headers $baseline renew"
    exit 1
}
