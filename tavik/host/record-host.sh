#!/bin/bash
# Records what the host source reads of this machine into a folder, for a bug report or a test:
#
#     record-host.sh FOLDER && tavik_host_dump --root FOLDER
#
# With --anonymise the recording has other MAC and IP addresses, world wide names, serial numbers and host names of the
# same form and maker. What was replaced stands in FOLDER.replaced, for its owner alone.
#
# Only the attributes named below are copied, each at most 32 KiB, from at most 512 interfaces, hosts and units of each
# kind. The recording holds names, MAC and IP addresses, world wide names and serial numbers of the machine's adapters
# and of the storage behind them; it holds no keys, no configuration and no traffic. As root it holds more: vital
# product data and transceivers.
#
# What only a system call tells is written by tavik_host_dump, taken from $TAVIK_HOST_DUMP or the PATH.
set -u

most=512
largest=32768

interface_attributes=(address carrier dev_port flags ifindex mtu operstate phys_port_name speed type uevent)
interface_counters=(rx_bytes tx_bytes rx_packets tx_packets rx_errors tx_errors rx_dropped tx_dropped)
pci_attributes=(vendor device subsystem_vendor subsystem_device config vpd numa_node current_link_speed current_link_width
    max_link_speed max_link_width)
usb_attributes=(idVendor idProduct manufacturer product serial)
host_attributes=(node_name port_name port_id port_type port_state speed manufacturer model serial_number driver_version
    firmware_version optionrom_version fabric_name symbolic_name supported_speeds)
driver_attributes=(modelname model_name serialnum serial_num fwrev fw_version driver_version option_rom_version
    optrom_bios_version optrom_efi_version optrom_fcode_version)
remote_port_attributes=(port_name node_name port_state roles port_id)
unit_attributes=(vendor model rev wwid state)
counters=(fcp_input_requests fcp_output_requests fcp_control_requests fcp_input_megabytes fcp_output_megabytes lip_count
    link_failure_count loss_of_sync_count loss_of_signal_count prim_seq_protocol_err_count invalid_tx_word_count
    invalid_crc_count rx_frames tx_frames rx_words tx_words nos_count error_frames dumped_frames)

anonymise=
if [ "${1-}" = --anonymise ]; then
    anonymise=yes
    shift
fi
if [ $# -ne 1 ] || [ "${1#-}" != "$1" ]; then
    echo "usage: $0 [--anonymise] FOLDER" >&2
    exit 2
fi
dump=${TAVIK_HOST_DUMP:-$(command -v tavik_host_dump)}
if [ -n "$anonymise" ] && [ -z "$dump" ]; then
    echo "$0: --anonymise needs tavik_host_dump, in the PATH or as TAVIK_HOST_DUMP" >&2
    exit 1
fi
if [ -e "$1" ] && [ -n "$(ls -A "$1" 2>/dev/null)" ]; then
    echo "$0: $1 exists and is not empty" >&2
    exit 1
fi
if [ -n "$anonymise" ]; then
    if [ -e "$1.replaced" ]; then
        echo "$0: $1.replaced exists" >&2
        exit 1
    fi
    # The original goes when this ends, however it ends; nobody else sees it meanwhile.
    tree=$(mktemp -d) || exit 1
    trap 'rm -rf "$tree"' EXIT
    trap 'exit 1' HUP INT TERM
else
    mkdir -p "$1" || exit 1
    tree=$(cd "$1" && pwd) || exit 1
fi

# What cannot be read is left out: a recording has an absent file where the machine has an unreadable one.
copy_file() {
    local content="$tree$1"
    [ -f "$1" ] || return 0
    mkdir -p "$(dirname "$content")"
    timeout 20 head -c "$largest" "$1" >"$content" 2>/dev/null || rm -f "$content"
}

copy_files() {
    local folder=$1 name
    shift
    for name in "$@"; do copy_file "$folder/$name"; done
}

# The link as it stands. What it leads to need not be there: mostly its name tells enough.
copy_link() {
    [ -L "$1" ] || return 0
    mkdir -p "$tree$(dirname "$1")"
    cp -P "$1" "$tree$1"
}

# The device, its bus and driver, and of the devices above it those that may say who made the adapter.
copy_device() {
    local path=$1 link
    while [ "$path" != /sys/devices ] && [ "$path" != / ]; do
        copy_link "$path/subsystem"
        copy_link "$path/driver"
        case $(basename "$path") in
        *:*:*.[0-7])
            copy_files "$path" "${pci_attributes[@]}"
            for link in "$path/physfn" "$path"/virtfn*; do copy_link "$link"; done
            ;;
        esac
        [ -f "$path/idVendor" ] && copy_files "$path" "${usb_attributes[@]}"
        path=$(dirname "$path")
    done
}

record_interface() {
    local class=/sys/class/net/$1 path link
    path=$(readlink -f "$class")
    copy_link "$class"
    copy_files "$path" "${interface_attributes[@]}"
    copy_files "$path/statistics" "${interface_counters[@]}"
    copy_files "$path/bonding_slave" state mii_status perm_hwaddr
    for link in "$path"/device "$path"/master "$path"/lower_* "$path"/upper_*; do copy_link "$link"; done
    [ -L "$path/device" ] && copy_device "$(readlink -f "$path/device")"
}

record_host() {
    local class=/sys/class/fc_host/$1 path device
    path=$(readlink -f "$class")
    device=$(readlink -f "$class/device")
    copy_link "$class"
    copy_link "$path/device"
    copy_files "$path" "${host_attributes[@]}"
    copy_files "$path/statistics" "${counters[@]}"
    copy_file "$device/sfp"
    copy_link "/sys/class/scsi_host/$1"
    copy_files "$(readlink -f "/sys/class/scsi_host/$1")" "${driver_attributes[@]}"
    copy_device "$(dirname "$device")"
}

record_remote_port() {
    copy_link "/sys/class/fc_remote_ports/$1"
    copy_files "$(readlink -f "/sys/class/fc_remote_ports/$1")" "${remote_port_attributes[@]}"
}

record_unit() {
    local path device block holder
    path=$(readlink -f "/sys/class/scsi_device/$1")
    device=$(readlink -f "$path/device")
    # Units that are not behind a Fibre Channel port are none of the source's business.
    case $device in */rport-*) ;; *) return ;; esac
    copy_link "/sys/class/scsi_device/$1"
    copy_link "$path/device"
    copy_files "$device" "${unit_attributes[@]}"
    for block in "$device"/block/*; do
        [ -d "$block" ] || continue
        mkdir -p "$tree$block"
        copy_files "$block" queue/logical_block_size size
        copy_link "$block/device"
        for holder in "$block"/holders/*; do
            copy_link "$holder"
            record_holder "$(readlink -f "$holder")"
        done
    done
}

# A device above a unit, and the devices that it stands on.
record_holder() {
    local slave
    copy_files "$1/dm" name uuid
    for slave in "$1"/slaves/*; do copy_link "$slave"; done
}

record_slot() { copy_file "/sys/bus/pci/slots/$1/address"; }

record_class() {
    local class=$1 record=$2 path count=0
    for path in "/sys/$class"/*; do
        [ -d "$path" ] || continue
        [ "$((count += 1))" -le "$most" ] || break
        "$record" "$(basename "$path")"
    done
}

# The lines of the system's list that name the recorded PCI devices; models are named by it.
record_names() {
    local list folder wanted=
    for list in "${TAVIK_PCI_IDS:-/usr/share/misc/pci.ids}" /usr/share/hwdata/pci.ids; do [ -f "$list" ] && break; done
    [ -f "$list" ] || return
    while read -r folder; do
        wanted+=" $(cut -c3-6 "$folder/vendor"):$(cut -c3-6 "$folder/device")"
    done < <(find "$tree/sys/devices" -path '*:*:*.[0-7]/device' -type f -printf '%h\n' 2>/dev/null)
    mkdir -p "$tree/usr/share/misc"
    awk -v wanted="$wanted" '
        BEGIN { split(wanted, pairs, " "); for (i in pairs) { devices[pairs[i]]; vendors[substr(pairs[i], 1, 4)] } }
        /^[0-9a-f]/ { vendor = substr($0, 1, 4); if (vendor in vendors) print }
        /^\t[0-9a-f]/ && ((vendor ":" substr($0, 2, 4)) in devices)' "$list" >"$tree/usr/share/misc/pci.ids"
}

mkdir -p "$tree/sys/class/net"
record_class class/net record_interface
record_class class/fc_host record_host
record_class class/fc_remote_ports record_remote_port
record_class class/scsi_device record_unit
record_class bus/pci/slots record_slot
record_names

if [ -n "$dump" ]; then
    "$dump" --record-queries "$tree" || exit 1
else
    echo "$0: no tavik_host_dump, so drivers, transceivers and IP addresses are not recorded" >&2
fi
echo "recorded $(find "$tree" -type f | wc -l) attributes below $1"
[ -n "$anonymise" ] || exit 0
"$dump" --root "$tree" --anonymise "$1" --replaced "$1.replaced" --host-name "$(uname -n)" || exit 1
echo "what was replaced stands in $1.replaced, which is no part of the recording: keep it"
