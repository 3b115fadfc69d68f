# shellcheck shell=bash
# Every script starts by sourcing this file, which answers --help with the script's first comment
# and changes to the project's folder. The script then refuses unknown arguments.

if [[ ${1-} == --help || ${1-} == -h ]]; then
    sed -n '2,/^[^#]/{s/^# \{0,1\}//p}' "$0"
    exit
fi

# refuse ARGUMENT: prints an error and ends the script.
refuse() {
    echo "$0: unexpected argument '$1'; see $0 --help" >&2
    exit 2
}

# accept PATTERN [ARGUMENT...]: refuses the first argument that does not match.
accept() {
    local argument
    for argument in "${@:2}"; do
        # shellcheck disable=SC2053 # a pattern
        [[ $argument == $1 ]] || refuse "$argument"
    done
}

cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit
