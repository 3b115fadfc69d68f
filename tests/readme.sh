#!/usr/bin/env bash
# Holds what the README shows of the tool to what the tool prints: readme.sh ORMEL-TUNING README
#
# Shown are blocks whose first line is "$ ormel-tuning ...", with "..." for what is left out, and the
# list of rules. Pictures are not drawn again.
set -euo pipefail

tool=$1
readme=$2
cd "$(dirname "$readme")"
failed=0

fail() {
    echo "$readme: $1" >&2
    failed=1
}

# Compares a command's output with the lines that are shown of it.
compare() {
    local command=$1 line any=
    shift
    local -a actual
    # The command is the README's, words without quotes. Findings are no failure.
    # shellcheck disable=SC2086
    mapfile -t actual < <("$tool" ${command#ormel-tuning } 2>&1 || true)
    for line in "$@"; do
        if [[ $line == *... && ${line// /} == ... ]]; then
            any=1
            continue
        fi
        while [[ -n $any && ${#actual[@]} -gt 0 && ${actual[0]} != "$line" ]]; do
            actual=("${actual[@]:1}")
        done
        any=
        if [[ ${actual[0]-} != "$line" ]]; then
            fail "'$command' prints '${actual[0]-}' instead of '$line'"
            return
        fi
        actual=("${actual[@]:1}")
    done
    [[ -n $any || ${#actual[@]} -eq 0 ]] || fail "'$command' goes on with '${actual[0]}'"
}

blocks=0
command=
shown=()
finish() {
    [[ -z $command || $command == *' plot '* ]] || compare "$command" "${shown[@]}"
    command=
    shown=()
}
while IFS= read -r line; do
    if [[ $line == '    $ ormel-tuning '* ]]; then
        finish
        command=${line#*$ }
        blocks=$((blocks + 1))
    elif [[ -n $command && $line == '    '* ]]; then
        shown+=("${line#    }")
    else
        finish
    fi
done <"$readme"
((blocks > 0)) || fail 'shows nothing'

diff <(sed -n '/<!-- rules -->/,/<!-- \/rules -->/p' "$readme" | grep '^- ') <("$tool" check --rules) ||
    fail 'has other rules than the tool'
exit $failed
