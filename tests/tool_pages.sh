#!/usr/bin/env bash
# Compares the tool's output on the pages with what it prints: tool_pages.sh ORMEL-TUNING FOLDER
#
# docs/ormel-tuning.md has blocks whose first line is "$ ormel-tuning ..."; "..." means omitted lines.
# Commands that write pictures or pages are skipped. docs/check-rules.md has the list of rules.
set -euo pipefail

tool=$1
cd "$2"
page=docs/ormel-tuning.md
failed=0

fail() {
    echo "$page: $1" >&2
    failed=1
}

# Compares a command's output with the lines on the page.
compare() {
    local command=$1 line any=
    shift
    local -a actual
    # The page's commands have no quoted words. Findings are no failure.
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
    [[ -n $any || ${#actual[@]} -eq 0 ]] || fail "'$command' also prints '${actual[0]}'"
}

blocks=0
command=
shown=()
finish() {
    [[ -z $command || $command == *' -o '* ]] || compare "$command" "${shown[@]}"
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
done <$page
((blocks > 0)) || fail 'has no commands'

page=docs/check-rules.md
diff <(sed -n '/<!-- rules -->/,/<!-- \/rules -->/p' $page | grep '^- ') <("$tool" check --rules) ||
    fail 'is out of date; run script/document-rules'
exit $failed
