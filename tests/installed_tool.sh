#!/usr/bin/env bash
# Installs the project and tests the tool's man page and completions:
# installed_tool.sh BUILD-FOLDER [EMULATOR...]
set -euo pipefail
build=$1
emulator=("${@:2}")
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
failures=0
fail() {
    echo "FAILED: $*"
    failures=$((failures + 1))
}

cmake --install "$build" --prefix "$root" >/dev/null
ormel-tuning() {
    "${emulator[@]}" "$root/bin/ormel-tuning" "$@"
}

for file in bin/ormel-tuning share/man/man1/ormel-tuning.1 \
    share/bash-completion/completions/ormel-tuning share/zsh/vendor-completions/_ormel-tuning \
    share/xml/ormel-tuning/spatializer-tuning.xsd; do
    [[ -s $root/$file ]] || fail "no $file"
done
example=$(find "$root/share/doc" -name tablet-quad.xml)
ormel-tuning check "$example" || fail 'the installed tool does not work'
ormel-tuning schema | cmp - "$root/share/xml/ormel-tuning/spatializer-tuning.xsd" || fail schema

# The man page and the completions have every command and option that help lists.
page=$(sed 's/\\-/-/g; s/\\f.//g' "$root/share/man/man1/ormel-tuning.1")
# shellcheck disable=SC1091
source "$root/share/bash-completion/completions/ormel-tuning"
compopt() { :; }
completed() {
    COMP_WORDS=("$@")
    COMP_CWORD=$(($# - 1))
    COMPREPLY=()
    _ormel_tuning
    printf '%s\n' "${COMPREPLY[@]}"
}
commands=$(completed ormel-tuning '')
[[ $(wc -w <<<"$commands") == 8 ]] || fail "completes commands to '$commands'"
for command in ${commands/help/}; do
    section=$(sed -n "/^\.SS $command\b/,/^\.S[SH] /p" <<<"$page")
    [[ -n $section ]] || fail "the man page lacks $command"
    options=$(ormel-tuning help "$command" | grep -oE '^ +(-[a-z],)?--[a-z-]+' | grep -oE -- '--[a-z-]+')
    for option in $options; do
        [[ $option == --help || $section == *"$option"* ]] || fail "man page: $command $option"
        [[ $(completed ormel-tuning "$command" "$option") == *"$option"* ]] ||
            fail "completion: $command $option"
    done
done
[[ $(completed ormel-tuning pl) == plot ]] || fail 'pl does not complete to plot'
! command -v man >/dev/null || man -l --warnings=all "$root/share/man/man1/ormel-tuning.1" 2>&1 >/dev/null |
    { ! grep .; } || fail 'the man page has warnings'
((failures == 0))
