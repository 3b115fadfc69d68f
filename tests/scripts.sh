#!/usr/bin/env bash
# Checks that every script answers --help and refuses unknown arguments: scripts.sh FOLDER
set -euo pipefail
failed=0

fail() {
    echo "$1" >&2
    failed=1
}

for script in "$1"/*; do
    [[ -x $script ]] || continue
    help=$("$script" --help)
    [[ -n $help && $(sed -n 2p "$script") == "# ${help%%$'\n'*}" ]] ||
        fail "$script --help prints '$help'"
    [[ $help == *"script/${script##*/}"* ]] || fail "$script --help does not show how to call it"
    status=0
    complaint=$("$script" --no-such-option 2>&1) || status=$?
    [[ $status == 2 && $complaint == *"'--no-such-option'"* ]] ||
        fail "$script --no-such-option ends with $status: $complaint"
done
exit $failed
