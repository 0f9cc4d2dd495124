#!/bin/bash
# Usage: record_host_test.sh RECORD-HOST.SH TAVIK_HOST_DUMP
# Records this machine and compares the dump of the recording with the machine's own. Reasons for absence differ: what
# the machine refuses, the recording lacks.
set -eu
script=$1
export TAVIK_HOST_DUMP=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

without_reasons() { sed 's/ (.*)$//'; }

"$script" "$folder/recording"
"$TAVIK_HOST_DUMP" --root "$folder/recording" | without_reasons >"$folder/recorded"
"$TAVIK_HOST_DUMP" | without_reasons >"$folder/live"
[ -s "$folder/live" ]
diff "$folder/live" "$folder/recorded"

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
