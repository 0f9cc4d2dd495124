#!/usr/bin/env bash
# The largest flash image as bytes in CIM-XML: the update works, and the server's memory stays a small multiple of it.
# usage: large_image.sh CIMHOST FLEET
set -euo pipefail

# shellcheck source=tests/end_to_end/method_calls.sh
source "$(dirname "${BASH_SOURCE[0]}")/method_calls.sh" "$@"

image_kib=16384
header=128
head -c $((image_kib * 1024 - header)) /dev/zero | tr '\0' '\377' >payload.bin
"$cimhost" image make image.bin --model MC1020 --image-version 2.2.9 --date 2013-04-30 --payload payload.bin
check "the image's size" $((image_kib * 1024)) "$(stat -c %s image.bin)"

answer=$({
    begin_call $nic InstallFromByteStream
    image_parameter image.bin
    target_parameter Merolt_NIC_PortController MC1020R4K00317
    end_call
} | send_call)
check "the update's outcome" 0 "$(value_of "$answer")"
check "the fleet file has the new version" yes "$(grep -q '"flashVersion": "02.02.09"' "$fleet" && echo yes)"

peak_kib=$(sed -n 's/^VmHWM:[^0-9]*\([0-9]*\) kB/\1/p' "/proc/$server/status")
printf 'peak of the server: %d KiB, %d.%02d times the image\n' "$peak_kib" $((peak_kib / image_kib)) \
    $((peak_kib * 100 / image_kib % 100))
check "at most six times the image" yes "$([[ $peak_kib -le $((6 * image_kib)) ]] && echo yes)"

finish
