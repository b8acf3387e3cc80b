#!/bin/bash
# manual.sh PREFIX: the pages have no mistakes, the completions complete in the shells that are there.
set -euo pipefail
cd "$1/share"
fail() {
    echo "$*"
    exit 1
}
if command -v mandoc >/dev/null; then
    # A date is there from the release on.
    ! mandoc -T lint -W warning man/man*/audlmd* | grep -v "cannot parse date" || fail "the pages have mistakes, see above"
    # As plain text, without letters that are struck twice.
    page=$(mandoc -T utf8 man/man1/audlmd-mix.1 | sed 's/.\x08//g')
    [[ $page == *"--slice K/N"* ]] || fail "a page has lost its options"
fi

. bash-completion/completions/audlmd
# expect WORDS-SO-FAR ANSWER: what bash completes the last word to.
expect() {
    read -ra COMP_WORDS <<<"$1"
    [[ $1 != *" " ]] || COMP_WORDS+=("")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    _audlmd || true # nothing fits
    COMPREPLY=($(printf '%s\n' "${COMPREPLY[@]}" | sort))
    [ "${COMPREPLY[*]}" = "$2" ] || fail "bash completes '$1' to '${COMPREPLY[*]}', not to '$2'"
    ! command -v fish >/dev/null || [ -z "${3-$2}" ] ||
        [ "$(fish -c "source $PWD/fish/vendor_completions.d/audlmd.fish; complete -C '$1'" | cut -f 1 | sort | tr '\n' ' ')" = \
            "$(tr ' ' '\n' <<<"$2" | sort | tr '\n' ' ')" ] || fail "fish completes '$1' to something else than '$2'"
}
expect "audlmd re" "render"
expect "audlmd render --form" "--format"
expect "audlmd render --format s2" "s24 s24in32"
expect "audlmd plot env" "envelope"
expect "audlmd plot envelope --fade-i" "--fade-in"
expect "audlmd mix --as " "json text"
cd man
expect "audlmd render man" "man1 man5 man7" ""
expect "audlmd mix film.otio --media man1/audlmd-m" "" ""
! command -v zsh >/dev/null || zsh -n ../zsh/vendor-completions/_audlmd
