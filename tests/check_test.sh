#!/usr/bin/env bash
# Tests ormel-tuning check, mostly on documents with one fault each: check_test.sh TOOL EXAMPLES
set -euo pipefail
tool=$1
examples=$2
cd "$(dirname "$0")/check"
temp=$(mktemp -d)
trap 'rm -r "$temp"' EXIT
failures=0

fail() {
    printf 'FAILED: %s\n' "$*"
    failures=$((failures + 1))
}

# expect STATUS ARGUMENT...: runs the tool and checks its status; output goes to $temp/out and /err.
expect() {
    local expected=$1 status=0
    shift
    "$tool" check "$@" >"$temp/out" 2>"$temp/err" || status=$?
    ((status == expected)) || fail "check $*: status $status, not $expected: $(<"$temp/err")"
}

# Reads findings as "FILE LINE ID", each once.
triples() {
    sed -nE 's/^(.*):([0-9]+): (error|warning|note): .* \[([a-z-]+)\]$/\1 \2 \4/p' | sort -u
}

export LC_ALL=C
grep -v '^#' expected.txt | sort -u >"$temp/expected"
expect 1 ./*.xml
tail -n 1 "$temp/out" | grep -q '^[0-9]* files checked: ' || fail 'no summary'
sed -i '$d' "$temp/out"
sed 's|^\./||' "$temp/out" | triples | diff "$temp/expected" - || fail 'findings'
[[ $(grep -cvE '\[[a-z-]+\]$' "$temp/out") == 0 ]] || fail 'more than findings'
! grep -q $'\033' "$temp/out" || fail 'colours in a file'
grep -q '18: .* 1 number for -1 channels; two are sent' "$temp/out" || fail 'negative channels'

# Every rule has a document, and an explanation.
expect 0 --rules
sed -nE 's/^- `([a-z-]+)` \((error|warning|note)\): .*/\1/p' "$temp/out" >"$temp/rules"
[[ $(wc -l <"$temp/rules") == $(wc -l <"$temp/out") ]] || fail 'a line of --rules is no rule'
cut -d ' ' -f 3 "$temp/expected" | sort -u | diff <(sort "$temp/rules") - || fail 'rules'
while read -r rule; do
    expect 0 --explain "$rule"
    grep -q "^$rule (" "$temp/out" || fail "--explain $rule"
done <"$temp/rules"

# Warnings and errors give status 1, unless options or a file change that.
printf '[check]\nfail-on = "note"\ndisable = ["absent"]\n' >"$temp/options"
printf '[check]\nfail-onn = "note"\n' >"$temp/misspelt"
expect 0 absent.xml
expect 1 --fail-on note absent.xml
expect 0 --fail-on note --disable absent absent.xml
expect 0 --config "$temp/options" absent.xml
expect 1 --config "$temp/options" implausible.xml
expect 0 --fail-on error repeated-value.xml
expect 2 --config "$temp/misspelt" absent.xml
grep -q 'misspelt: unknown setting check.fail-onn;' "$temp/err" || fail "--config: $(<"$temp/err")"

# The examples have no findings, except faulty.xml, which has three.
for example in "$examples"/*.xml; do
    if [[ $example == */faulty.xml ]]; then
        expect 1 "$example"
        [[ $(wc -l <"$temp/out") == 3 ]] || fail "$example: $(<"$temp/out")"
    else
        expect 0 "$example"
        [[ ! -s $temp/out ]] || fail "$example: $(<"$temp/out")"
    fi
done

# Line numbers too large for libxml2, and tags of several lines.
{
    printf '<device_tuning_data>\n    <format_version major="3" minor="4" maintenance="0"/>\n'
    printf '    <profile id="0" name="p">\n'
    printf '\n%.0s' {1..70000}
    printf '        <volume-modeler-enable\n            value="True"/>\n    </profile>\n'
    printf '    <tool_version major="1"\n        minor="04"\n        maintenance="0"/>\n'
    printf '</device_tuning_data>\n'
} >"$temp/long.xml"
expect 1 "$temp/long.xml"
triples <"$temp/out" | diff - <(printf '%s\n' "$temp/long.xml 70004 misspelt-boolean" \
    "$temp/long.xml 70007 schema") || fail 'lines'

# Documents made to take for ever, or to overflow the stack.
{
    printf '<!DOCTYPE d [<!ENTITY a0 "aaaaaaaaaa">'
    for ((i = 1; i < 20; i++)); do
        printf '<!ENTITY a%d "&a%d;&a%d;&a%d;&a%d;">' "$i" $((i - 1)){,,,}
    done
    printf ']>\n<d>\n<preset type="&a19;" id="&a19;">&a19;</preset>\n</d>\n'
} >"$temp/bomb.xml"
{
    printf '<d>'
    printf '<profile>%.0s' {1..100000}
} >"$temp/deep.xml"
for hostile in bomb deep; do
    expect 1 "$temp/$hostile.xml"
    [[ $(wc -l <"$temp/out") -lt 100 ]] || fail "$hostile: too many findings"
done

# A file that cannot be read gives one line on stderr; the other files are still checked.
mkfifo "$temp/pipe"
for file in "$temp/absent.xml" "$temp/pipe"; do
    expect 2 "$file" unknown-port.xml
    [[ $(wc -l <"$temp/err") == 1 ]] || fail "$file: $(<"$temp/err")"
    grep -q '^1 file checked' "$temp/out" || fail "$file: $(<"$temp/out")"
done
expect 2
for option in --explain --disable; do
    expect 2 "$option" no-such-rule absent.xml
    grep -qx "ormel-tuning: there is no rule 'no-such-rule'; see check --rules" "$temp/err" ||
        fail "$option: $(<"$temp/err")"
    expect 2 "$option" missing_attribute absent.xml
    grep -q "the nearest is 'missing-attribute'; see check --rules" "$temp/err" ||
        fail "$option: $(<"$temp/err")"
done
expect 2 --schema "$temp/absent.xsd" empty.xml

((failures == 0))
