# shellcheck shell=bash
# Every script begins by sourcing this file. It answers --help with the comment at the script's head
# and goes to the project's folder. The script then refuses the arguments that it does not take.

if [[ ${1-} == --help || ${1-} == -h ]]; then
    sed -n '2,/^[^#]/{s/^# \{0,1\}//p}' "$0"
    exit
fi

# refuse ARGUMENT: ends the script.
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
