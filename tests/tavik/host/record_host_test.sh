#!/bin/bash
# Usage: record_host_test.sh RECORD-HOST.SH TAVIK_HOST_DUMP
# Records this machine and compares the dump of the recording with the machine's own. Reasons for absence differ: what
# the machine refuses, the recording lacks.
set -eu
script=$1
export TAVIK_HOST_DUMP=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# Counters move meanwhile.
without_reasons() { sed -E 's/ \(.*\)$//; s/(total[A-Za-z]+): [0-9]+$/\1: moving/'; }

# The list of names of a system that has one; what is not recorded is left out of it.
export TAVIK_PCI_IDS=$folder/pci.ids
pci=$(readlink -f /sys/class/net/*/device/.. /sys/class/net/*/device | grep -E '/[0-9a-f]{4}:[0-9a-f:.]{7}$' | head -n 1)
[ -z "$pci" ] || vendor=$(cut -c3- "$pci/vendor") device=$(cut -c3- "$pci/device")
printf '%s\n' '# a list' 'fff1  Other Makers' "${vendor-fff2}  Example Networks" \
    $'\tfff3  Other Card' $'\t'"${device-fff4}  Example Card" $'\t\t1af4 0001  Other Board' >"$TAVIK_PCI_IDS"

"$script" "$folder/recording"
if [ -n "$pci" ]; then
    printf '%s\n' "$vendor  Example Networks" $'\t'"$device  Example Card" |
        diff - "$folder/recording/usr/share/misc/pci.ids"
fi
"$TAVIK_HOST_DUMP" --root "$folder/recording" | without_reasons >"$folder/recorded"
"$TAVIK_HOST_DUMP" | without_reasons >"$folder/live"
[ -s "$folder/live" ]
diff "$folder/live" "$folder/recorded"

# Without its names the recording still reads like the machine, and has none of them.
"$script" --anonymise "$folder/given" >"$folder/output"
[ "$(stat -c %a "$folder/given.replaced")" = 600 ]
[ -s "$folder/given.replaced" ]
cut -f 2 "$folder/given.replaced" | while read -r original; do
    if grep -rqiaF -- "$original" "$folder/given" || find "$folder/given" | grep -qiF -- "$original"; then
        echo "$original is left" >&2
        exit 1
    fi
done
"$TAVIK_HOST_DUMP" --root "$folder/given" >"$folder/shown"
[ "$(wc -l <"$folder/shown")" = "$(wc -l <"$folder/recorded")" ]
if cmp -s "$folder/shown" "$folder/recorded"; then
    echo "nothing was replaced" >&2
    exit 1
fi
if "$script" --anonymise "$folder/given" 2>"$folder/error"; then
    echo "a second recording without names into one folder was not refused" >&2
    exit 1
fi
grep -q 'exists and is not empty' "$folder/error"

# What is no recording is named.
for root in "$folder/nonexistent" "$folder/live" "$folder"; do
    if "$TAVIK_HOST_DUMP" --root "$root" >"$folder/output" 2>"$folder/error"; then
        echo "$root was taken for a recording" >&2
        exit 1
    fi
    [ ! -s "$folder/output" ]
    grep -qF "tavik_host_dump: $root: no recorded tree" "$folder/error"
done

# A folder that is in use is not written to.
if "$script" "$folder/recording" 2>"$folder/error"; then
    echo "a second recording into one folder was not refused" >&2
    exit 1
fi
grep -q 'exists and is not empty' "$folder/error"
