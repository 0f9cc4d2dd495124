#!/usr/bin/env bash
# Updates cards of a fleet through CIM-XML, with wbemcli and with bytes, and reads the new versions back.
# usage: flash.sh CIMHOST FLEET
set -euo pipefail

# shellcheck source=tests/end_to_end/method_calls.sh
source "$(dirname "${BASH_SOURCE[0]}")/method_calls.sh" "$@"

image=$folder/image.bin
make_image() { # make_image MODEL VERSION FIRMWARE
    "$cimhost" image make "$image" --force --model "$1" --image-version "$2" --date 2013-04-30 --firmware "$3" --bios 3.41
}

# What a method returned; wbemcli prints it behind the path.
returned() { sed -n 's/^.*[^0-9]\([0-9]*\)$/\1/p' <<<"$1" | tail -1; }
path_of() { wbemcli ein "http://$namespace:$1" | sed "s|^[^:/]*:[0-9]*/||" | grep -m1 "${2:-.}"; }
rom_versions() { wbemcli ei -nl "http://$namespace:Merolt_FCHBA_FCPort" | sed -n 's/^-OptionROMVersions="\(.*\)"$/\1/p'; }
rom_of() { # rom_of BIOS EFI FCODE FIRMWARE
    printf 'OptionROM BIOS Version:%s;OptionROM EFI Version:%s;OptionROM FCode Version:%s;OptionROM Firmware Version:%s' "$@"
}
versions_of() { wbemcli ei -nl "http://$namespace:$1" | sed -n 's/^-VersionString="\(.*\)"$/\1/p'; }

eventually() { # eventually TEXT COMMAND...: whether the text is a line of what the command prints within 20 seconds
    local text=$1
    shift
    for _ in $(seq 100); do
        if "$@" | grep -qxF -- "$text"; then echo yes; return; fi
        sleep 0.2
    done
    echo no
}

# The storage side shows the new versions when the method returns.
old_rom=$(rom_of 3.31 5.30 3.24 7.02.04)
new_rom=$(rom_of 3.41 N/A N/A 8.01.00)
before=$(rom_versions)
check "both ports of the card show its option ROM before the update" 2 "$(grep -cxF "$old_rom" <<<"$before")"
make_image MC1020 2.2.3 8.1.0
answer=$(call $storage InstallFromURI "$(text_parameter URI "FILE://$image")$(target_parameter Merolt_FCHBA_PortController MC1020R4K00317)$no_options")
check "the storage side's update" 0 "$(value_of "$answer")"
check "the operator reads who changed what, and how it ended" 1 \
    "$(grep -cE "^cimhost: audit: client=127\.0\.0\.1:[0-9]+ user=\"\" operation=InstallFromURI object=root/merolt_cmpi:$storage result=\"ReturnValue 0\"$" errors)"
check "its ports show what the image brings and leaves out, others what they had" "${before//"$old_rom"/"$new_rom"}" \
    "$(rom_versions)"
check "its software identities show the image's firmware at once" 8.01.00 \
    "$(versions_of Merolt_FCHBA_SoftwareIdentity | grep -m1 -x 8.01.00)"
check "its software identities show the image's version at once" 2.2.3 \
    "$(versions_of Merolt_FCHBA_SoftwareIdentity | grep -m1 -x 2.2.3)"

# The Ethernet side by bytes: new versions show after the next refresh.
make_image MC1020 2.2.4 8.1.0
answer=$(call $nic InstallFromByteStream "$(image_parameter "$image")$(target_parameter Merolt_NIC_PortController MC1020R4K00317_NIC)")
check "an update by bytes" 0 "$(value_of "$answer")"
check "its software identity shows the image's version after a refresh" yes \
    "$(eventually 02.02.04 versions_of Merolt_NIC_SoftwareIdentity)"

# wbemcli sends all it has as texts.
make_image MC1020 2.2.5 8.1.0
service=$(wbemcli ein "http://$namespace:$nic")
target='root/merolt_cmpi:Merolt_NIC_PortController.DeviceID="MC1020R4K00317"'
check "an update with wbemcli" 0 "$(returned "$(wbemcli cm "http://$service" "InstallFromURI.URI=$image,Target=$target" 2>&1)")"
check "the fleet file has the new version" yes "$(grep -q '"flashVersion": "02.02.05"' "$fleet" && echo yes)"

# What does not fit changes nothing.
before=$(cat "$fleet")
make_image OTHER 9.9.9 9.9.9
nic_uri() { call $nic InstallFromURI "$(text_parameter URI "$1")$(target_parameter Merolt_NIC_PortController MC1020R4K00317)"; }
check "an image for another card" 2 "$(value_of "$(nic_uri "$image")")"
head -c 100 "$image" >cut.bin
check "an image that was cut" 2 "$(value_of "$(nic_uri "$folder/cut.bin")")"
check "a remote location" 2 "$(value_of "$(nic_uri "http://192.0.2.1/image.bin")")"
check "the fleet after three refusals" "$before" "$(cat "$fleet")"
check "the server says what was wrong with the image" yes \
    "$(grep -q 'flash update refused: the image is for cards of model "OTHER"' errors && echo yes)"

check "an argument that is not there is an error, and nothing hangs" 12 \
    "$(code_of "$(call $storage InstallFromURI "$(text_parameter URI x)")")"
check "a method that is not declared" 17 "$(code_of "$(call $nic NoSuchMethod "")")"
check "an argument that is not declared" 4 "$(code_of "$(call $nic InstallFromURI "$(text_parameter Color red)")")"
check "a class without methods" 17 "$(code_of "$(call Merolt_FCHBA_FCPort InstallFromURI "")")"
check "requests still work" 02.02.05 "$(eventually 02.02.05 versions_of Merolt_NIC_SoftwareIdentity >/dev/null; versions_of Merolt_NIC_SoftwareIdentity | grep -m1 -x 02.02.05)"

# The same without a network, and what a server gives that tags arrays with their type.
make_image MC1020 2.3.0 8.2.0
invoke() { "$cimhost" invoke --fleet "$fleet" "$@" 2>/dev/null; }
check "cimhost invoke" "ReturnValue: 0 (Job Completed with No Error)" "$(invoke $nic InstallFromURI "URI=file://$image" "Target=Merolt_NIC_PortController.DeviceID=\"MC1020R4K00317_NIC\"")"
check "cimhost invoke in JSON" '"ReturnValue":2' "$(invoke --json $nic InstallFromByteStream "Image=@$image" "Target=Merolt_NIC_PortController.DeviceID=\"MC1020R4K00317\"" | grep -o '"ReturnValue": *[0-9]*' | tr -d ' ')"
check "bare arrays" "ReturnValue: 0 (Job Completed with No Error)" "$(invoke --bare-arrays $nic InstallFromByteStream "Image=@$image" "Target=Merolt_NIC_PortController.DeviceID=\"MC1020R4K00317\"")"

finish
