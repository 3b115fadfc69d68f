#!/usr/bin/env bash
# Runs the commands in docs/review.md and compares their output: review_page.sh ORMEL-TUNING FOLDER
set -euo pipefail
tool=$1
root=$2
page=$root/docs/review.md
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$root"
failed=0
fail() {
    echo "$page: $*"
    failed=1
}

# The lines below a command are its output; "..." means lines left out.
shown_of() {
    awk -v command="    \$ $1" '
        shown && !/^    / { exit }
        shown { print substr($0, 5) }
        $0 == command { shown = 1 }' "$page"
}
while IFS= read -r command; do
    read -ra words <<<"$command"
    [[ $command != *' -o '* ]] || continue
    "$tool" "${words[@]:1}" >"$work/printed" || true
    shown_of "$command" >"$work/shown"
    [[ -s $work/shown ]] || fail "shows nothing of $command"
    while IFS= read -r line; do
        [[ $line == ... ]] || grep -qxF -- "$line" "$work/printed" || fail "$command lacks '$line'"
    done <"$work/shown"
done < <(sed -n 's/^    \$ //p' "$page")

# Runs the page's git settings unchanged.
export PATH=$work/bin:$PATH GIT_CONFIG_GLOBAL=/dev/null GIT_CONFIG_SYSTEM=/dev/null
mkdir "$work/bin" "$work/clone"
printf '#!/bin/sh\nexec "%s" "$@"\n' "$tool" >"$work/bin/ormel-tuning"
chmod +x "$work/bin/ormel-tuning"
cp examples/faulty.xml "$work/clone/tuning.xml"
recipe=$(grep '^git config' "$page")
attribute=$(grep -oE '^    [a-z.*]+ diff=tuning' "$page")
cd "$work/clone"
git init -q
echo "${attribute# *}" >.gitattributes
eval "$recipe"
git add .
git -c user.name=a -c user.email=a commit -qm a
cp "$root/examples/tablet-quad.xml" tuning.xml
[[ $(git --no-pager diff | tail -n 1) == '8 differences, counted for each device' ]] || fail "git diff: $(git --no-pager diff 2>&1)"
exit $failed
