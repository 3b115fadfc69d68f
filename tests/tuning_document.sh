#!/usr/bin/env bash
# Checks the XML examples on a page: tuning_document.sh ORMEL-TUNING PAGE
#
# An example without an XML declaration has only some sections; the script adds the others that a
# document needs. Its format is 3.4.0, or as in "format=..." on its opening line. It must have no
# findings, or if the opening line has "finding=ID", that one.
set -euo pipefail

tool=$1
document=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

awk -v work="$work" '
    /^```xml/ { file = work "/" NR; print substr($0, 8) >(file ".about"); next }
    /^```/ { file = "" }
    file { print >(file ".part") }' "$document"

# Adds the sections that an example lacks.
complete() {
    local part=$1 format=$2 name
    local -a version
    IFS=. read -ra version <<<"$format"
    echo '<device_tuning_data>'
    grep -q '<format_version' "$part" ||
        echo "<format_version major=\"${version[0]}\" minor=\"${version[1]}\"" \
            "maintenance=\"${version[2]}\"/>"
    cat "$part"
    for name in detailed:1 balanced:2; do
        [[ $format == 3.4.* ]] && name=${name#*:} || name=${name%:*}
        grep -q "<preset id=\"$name\"" "$part" ||
            printf '<preset id="%s" type="ieq">\n<data>\n<ieq-bands>\n%s\n%s\n%s\n%s\n' "$name" \
                '<band_ieq frequency="47" target="0"/>' '</ieq-bands>' '</data>' '</preset>'
    done
    echo '<tuning name="rest" endpoint_type="speaker" output_channels="2">'
    for name in internal_speaker headphone bluetooth usb; do
        grep -q "default_$name" "$part" ||
            echo "<device_id id=\"default_$name\" endpoint_port=\"$name\"/>"
    done
    printf '%s\n' '<data>' '<bass-enhancer-boost value="0"/>' '</data>' '</tuning>' \
        '</device_tuning_data>'
}

passed=0
failed=0
for about in "$work"/*.about; do
    line=$(basename "$about" .about)
    said=$(<"$about")
    format=3.4.0 expected=
    for word in $said; do
        case $word in
        format=*) format=${word#*=} ;;
        finding=*) expected=${word#*=} ;;
        esac
    done
    example=$work/$line.xml
    if grep -q '<?xml' "$work/$line.part"; then
        cp "$work/$line.part" "$example"
    else
        complete "$work/$line.part" "$format" >"$example"
    fi
    status=0
    output=$("$tool" check "$example" 2>&1) || status=$?
    if [[ -z $expected ]]; then
        wanted='0 *'
    else
        wanted="1 *[[]${expected}]*"
    fi
    # shellcheck disable=SC2053 # a pattern
    if [[ "$status $output" == $wanted ]]; then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
        printf '%s:%s: expected %s\n%s\n' "$document" "$line" "${expected:-no finding}" "$output"
        cat -n "$example"
    fi
done
echo "$passed passed, $failed failed"
((passed > 0 && failed == 0))
