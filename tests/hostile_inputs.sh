#!/usr/bin/env bash
# Runs every command on bad inputs: hostile_inputs.sh ORMEL-TUNING EXAMPLES
#
# A command that fails must exit with status 2 and give the reason in one line on stderr. If check
# can read the file, it must report findings and exit with status 1.
set -euo pipefail
tool=$1
examples=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export LC_ALL=C
failures=0
runs=0

# A stand-in for gnuplot that draws nothing.
mkdir bin
printf '#!/bin/sh\ncat\n' >bin/gnuplot
chmod +x bin/gnuplot
export PATH=$work/bin:$PATH

small=$examples/../tests/tools/small.xml
tablet=$examples/tablet-quad.xml
body=$(tail -n +2 "$small")

fail() {
    printf 'FAILED: %s\n' "$*"
    failures=$((failures + 1))
}

# Makes the input with the given name, or prints its content. Names without a case need nothing.
make() {
    case $1 in
    folder | folder.xml) mkdir "$1" ;;
    pipe) mkfifo pipe ;;
    socket) python3 -c 'import socket; socket.socket(socket.AF_UNIX).bind("socket")' ;;
    dangling) ln -s nowhere dangling ;;
    circle) ln -s circle circle ;;
    empty) : >empty ;;
    blanks) printf ' \n\t\n' >blanks ;;
    byte-order-mark) printf '\xef\xbb\xbf' >byte-order-mark ;;
    zeros) head -c 4096 /dev/zero >zeros ;;
    program) head -c 65536 "$tool" >program ;;
    gzip) gzip -c "$small" >gzip ;;
    100-MB) truncate -s 100M 100-MB ;;
    100-MB-document) { cat "$small"; head -c 100M /dev/zero | tr '\0' ' '; } >100-MB-document ;;
    17-MiB) { echo '<d><!--'; head -c 17M /dev/zero | tr '\0' x; echo '--></d>'; } >17-MiB ;;
    text) echo 'virtual-bass-mode = 3' >text ;;
    json) echo '{"profiles": []}' >json ;;
    half) head -c 700 "$small" >half ;;
    zero-inside) { head -c 700 "$small"; printf '\0'; tail -c +701 "$small"; } >zero-inside ;;
    two-roots) echo '<a/><b/>' >two-roots ;;
    open) echo '<a><b>' >open ;;
    crossed) echo '<a><b></a></b>' >crossed ;;
    twice-the-attribute) echo '<a b="" b=""/>' >twice-the-attribute ;;
    bad-utf-8) printf '<a b="\xff\xfe"/>' >bad-utf-8 ;;
    half-of-utf-16) printf '\xff\xfe<\0a\0/' >half-of-utf-16 ;;
    unknown-encoding) echo '<?xml version="1.0" encoding="KLINGON"?><a/>' >unknown-encoding ;;
    no-entity) echo '<a b="&c;"/>' >no-entity ;;
    entity-bomb)
        printf '<!DOCTYPE d [<!ENTITY a0 "aaaaaaaaaa">'
        for i in {1..20}; do
            printf '<!ENTITY a%d "&a%d;&a%d;&a%d;&a%d;">' "$i" $((i - 1)){,,,}
        done
        printf ']><d>\n<p name="&a20;"/></d>\n' ;;&
    deep) printf '<d>%.0s' {1..100000} ;;&
    entity-bomb | deep) ;;
    outside) echo '<!DOCTYPE d [<!ENTITY e SYSTEM "file:///etc/passwd">]><d>&e;</d>' >outside ;;
    far) echo '<!DOCTYPE d SYSTEM "http://0.0.0.0/d.dtd"><d/>' >far ;;
    long-attribute) { printf '<d a="'; head -c 9M /dev/zero | tr '\0' x; echo '"/>'; } >long-attribute ;;
    markup) cp "$examples/../tests/tools/markup.xml" markup ;;
    $'new\nline' | $'\e[2Jescape' | -dash | 'blank and $(touch stolen)') echo "$body" >"$1" ;;
    esac
}

# INPUT | status of check | status of the other commands | text in the line on stderr
inputs=(
    'missing|2|2|missing: No such file or directory'
    'folder|2|2|folder: '
    'folder.xml|2|2|folder.xml: '
    'folder/missing|2|2|No such file'
    '|2|2|No such file'
    'pipe|2|2|pipe: nothing writes to this pipe'
    'socket|2|2|socket: No such device'
    'dangling|2|2|No such file'
    'circle|2|2|Too many levels'
    "$(printf 'x%.0s' {1..300})|2|2|File name too long"
    '/dev/zero|2|2|larger than'
    '/dev/full|2|2|larger than'
    '/dev/null|1|2|/dev/null: '
    '/proc/self/mem|2|2|/proc/self/mem: '
    '/proc/self/cmdline|1|2|/proc/self/cmdline'
    'empty|1|2|empty: '
    'empty/file|2|2|Not a directory'
    'blanks|1|2|blanks:'
    'byte-order-mark|1|2|byte-order-mark:'
    'zeros|1|2|zeros:'
    'program|1|2|program:'
    'gzip|1|2|gzip:'
    '100-MB|2|2|larger than'
    '100-MB-document|2|2|larger than'
    '17-MiB|2|2|larger than'
    'text|1|2|text:'
    'json|1|2|json:'
    'half|1|2|half:'
    'zero-inside|1|2|zero-inside:'
    'two-roots|1|2|two-roots:'
    'open|1|2|open:'
    'crossed|1|2|crossed:'
    'twice-the-attribute|1|2|twice-the-attribute:'
    'bad-utf-8|1|2|bad-utf-8:'
    'half-of-utf-16|1|2|half-of-utf-16:'
    'unknown-encoding|1|2|unknown-encoding:'
    'no-entity|1|2|no-entity:'
    'entity-bomb|1|2|entity-bomb:'
    'deep|1|2|deep:'
    'outside|1|0|'
    'far|1|0|'
    'long-attribute|1|0|'
    'markup|1|0|'
    $'new\nline|1|0|'
    $'\e[2Jescape|1|0|'
    '-dash|1|0|'
    'blank and $(touch stolen)|1|0|'
)
commands=(
    'check'
    'show'
    'apply --profile movie'
    'diff --document'
    'plot -o picture.svg'
    'report -o page.html'
)

# expect STATUS PATTERN NAME COMMAND...: runs the tool and checks status and output.
expect() {
    local expected=$1 pattern=$2 name=$3 status=0
    shift 3
    timeout 60 "$tool" "$@" >out 2>err || status=$?
    runs=$((runs + 1))
    ((status == expected)) || fail "$1 $name: status $status, not $expected: $(head -c 300 err)"
    if ((status == 2)); then
        [[ $(wc -l <err) == 1 && $(<err) == "ormel-tuning: "*"$pattern"* ]] ||
            fail "$1 $name says '$(head -c 300 err)'"
    elif [[ -s err ]]; then
        fail "$1 $name complains: $(head -c 300 err)"
    fi
    ! grep -q $'\033' out err || fail "$1 $name sends escapes to the terminal"
}

for row in "${inputs[@]}"; do
    IFS='|' read -rd '' input of_check of_others pattern <<<"$row" || true
    pattern=${pattern%$'\n'}
    make "$input" >made
    [[ ! -s made ]] || mv made "$input"
    for command in "${commands[@]}"; do
        read -ra words <<<"$command"
        expected=$of_others
        [[ $command != check ]] || expected=$of_check
        # report works on a document that cannot be loaded if check can read it.
        [[ $command != report* || $of_check != 1 ]] || expected=0
        others=()
        [[ $command != diff* ]] || others=("$input")
        # Without a document, show shows the built-in lists.
        [[ $command != show || -n $input ]] || continue
        # plot fails on documents without curves.
        [[ $command != plot* || ! $input =~ ^(outside|far|long-attribute)$ ]] || continue
        expect "$expected" "$pattern" "$input" "${words[@]}" -- "$input" "${others[@]}"
    done
    rm -rf 100-MB* 17-MiB
done
[[ ! -e stolen ]] || fail 'ran a command in a file name'

# Closed standard input, and outputs that cannot be written.
outputs() {
    local status
    for command in "${commands[@]:0:4}" 'schema' 'help'; do
        read -ra words <<<"$command"
        case $command in
        schema | help) ;;
        diff*) words+=("$tablet" "$small") ;;
        *) words+=("$tablet") ;;
        esac
        [[ $command != check* ]] || words[1]=$examples/faulty.xml
        for output in /dev/full closed; do
            status=0
            if [[ $output == closed ]]; then
                "$tool" "${words[@]}" 2>err >&- || status=$?
            else
                "$tool" "${words[@]}" 2>err >$output || status=$?
            fi
            runs=$((runs + 1))
            [[ $status == 2 && $(<err) == 'ormel-tuning: cannot write the output' ]] ||
                fail "$command to $output: status $status: $(<err)"
        done
    done
}
outputs
mkdir folder.svg folder.html
ln -s /dev/full full.html
for target in nowhere/page.html folder.html full.html page.pdf ''; do
    expect 2 "${target:-: }" "to '$target'" report "$small" -o "$target"
done
for target in nowhere/page.svg folder.svg picture.gif ''; do
    expect 2 "${target:-: }" "to '$target'" plot "$small" -o "$target"
done
for command in "${commands[@]}"; do
    read -ra words <<<"$command"
    status=0
    "$tool" "${words[@]}" - "$([[ $command != diff* ]] || echo -)" 2>err >out <&- || status=$?
    [[ $status == 2 ]] || fail "$command without standard input: $status $(<err)"
done

# Pipes, standard input and folders, which are valid inputs.
"$tool" diff <(cat "$examples/faulty.xml") "$tablet" >out || [[ $? == 1 ]]
[[ $(tail -n 1 out) == '8 differences, counted for each device' ]] || fail 'a pipe'
"$tool" show - --profile movie <"$tablet" >out
grep -q '^profile 1 movie: [1-9][0-9]* entries' out || fail "standard input gave $(head -n 1 out)"
[[ $("$tool" check "$examples" | tail -n 1) == '6 files checked: 3 errors, 0 warnings and 0 notes in 1 file' ]] ||
    fail 'a folder'
status=0
"$tool" check --quiet "$examples" >out 2>&1 || status=$?
[[ $status == 1 && ! -s out ]] || fail "check --quiet: $status $(<out)"

# Misspelt commands.
for words in 'chek|check' 'shwo|show' 'reprot|report' 'help dif|diff' 'shema|schema'; do
    read -ra command <<<"${words%|*}"
    expect 2 "; the nearest is '${words#*|}'" "$words" "${command[@]}"
done
"$tool" show "$tablet" 2>err | true || [[ ! -s err ]] || fail "a reader that stops: $(<err)"
"$tool" schema | cmp - "$examples/../schema/spatializer-tuning.xsd" || fail schema
[[ $("$tool" --version) == 'ormel-tuning '[0-9]* ]] || fail version

echo "$runs runs on ${#inputs[@]} inputs, $failures failed"
((failures == 0))
