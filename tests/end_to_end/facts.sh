#!/usr/bin/env bash
# What people and clients are shown of a fleet with facts, and that a fleet without them is shown as ever.
# usage: facts.sh CIMHOST FLEET REGISTRATION
set -euo pipefail

cimhost=$1 fleet=$2
# shellcheck source=tests/checks.sh
source "$(dirname "${BASH_SOURCE[0]}")/../checks.sh"
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
# A terminal's width would cut tables.
unset COLUMNS

classes="Merolt_FCHBA_FCPort Merolt_FCHBA_PortController Merolt_FCHBA_FCPortStatistics Merolt_NIC_EthernetPort2
    Merolt_NIC_NetworkPort Merolt_NIC_PortController"
for class in $classes; do
    "$cimhost" enumerate "$class" --fleet "$fleet" --json >"$class"
    check "$class: a fleet without facts shows none, not even as null" 0 \
        "$(grep -cE '"(InterfaceName|PCIAddress|LinkSpeed|TotalLIPs|TotalReceivedBytes|UsedBy)"' "$class" || true)"
done
check "the tree of a fleet without facts" "Ethernet port 024D10317001, 10.625 Gbit/s, Link Up" \
    "$("$cimhost" tree --fleet "$fleet" | grep -o 'Ethernet port 024D10317001.*')"

cat >facts.json <<'END'
{ "cards": [ { "serialNumber": "S1", "ports": [ {
    "storage": {
        "portName": "21:00:02:00:00:00:00:07", "nodeName": "20:00:02:00:00:00:00:07", "speed": 16,
        "vpd": { "readOnly": { "SN": "S1" } },
        "facts": { "interfaceName": "host7", "linkSpeed": 32000000000, "maxLinkSpeed": 64000000000,
            "supportedLinkSpeeds": [32000000000, 64000000000], "fabricPortId": "010A02", "totalCrcErrors": 5000000000,
            "remotePorts": ["2100000200000001: FCP Target, Online, 0A0200"] } },
    "ethernet": {
        "macAddress": "02:00:00:00:00:07", "linkSpeedMegabits": 100000,
        "facts": { "interfaceName": "ens1f0", "adapterMaker": "Example Networks", "pciAddress": "0000:3b:00.0", "linkSpeed": 100000000000,
            "autoNegotiation": false, "totalReceivedBytes": 5000000000000, "usedBy": ["bond0 (bond, active, up)"] } }
} ] } ] }
END
# property FILE NAME: of the first instance, as JSON; "none" where it is not there.
property() {
    python3 -c 'import json, sys
properties = json.load(open(sys.argv[1]))[0]["properties"]
print(json.dumps(properties[sys.argv[2]]) if sys.argv[2] in properties else "none")' "$1" "$2"
}
ask() { "$cimhost" "$@" --fleet facts.json; }
check "the tree: storage port" "storage port 2100020000000007, host7, 32 Gbit/s, OK" \
    "$(ask tree | grep -o 'storage port.*')"
check "the tree: Ethernet port" "Ethernet port 020000000007, ens1f0, 100 Gbit/s, Link Up" \
    "$(ask tree | grep -o 'Ethernet port.*')"
check "the tree: controller" "Ethernet controller S1_NIC, Example Networks, 0000:3b:00.0, OK" \
    "$(ask tree | grep -o 'Ethernet controller.*')"
check "a table of storage ports" "Address Interface Status Type Speed Max. speed" \
    "$(ask enumerate Merolt_FCHBA_FCPort | head -1 | grep -o 'Address.*Max. speed' | tr -s ' ')"
check "a table of network ports" "020000000007 ens1f0 OK 100 Gbit/s 10.625 Gbit/s 1500" \
    "$(ask enumerate Merolt_NIC_NetworkPort | sed -n 2p | tr -s ' ')"
port='Merolt_NIC_EthernetPort2.DeviceID=020000000007'
ask enumerate Merolt_NIC_EthernetPort2 --json >ethernet.json
check "JSON: numbers, truths, lists" '5000000000000 false ["bond0 (bond, active, up)"]' \
    "$(for name in TotalReceivedBytes AutoNegotiation UsedBy; do property ethernet.json $name; done | xargs -d '\n')"
check "the contract's speed stays" 0 "$(property ethernet.json Speed)"
check "JSON: what is not known is left out" none "$(property ethernet.json PCISlot)"
path=$(python3 -c 'import json; print(json.load(open("ethernet.json"))[0]["path"])')
check "get of $port" "  PCIAddress: 0000:3b:00.0" "$(ask get "$path" | grep PCIAddress)"
check "get with a unit" "  LinkSpeed: 100000000000 (100 Gbit/s)" "$(ask get "$path" | grep -w LinkSpeed)"
ask enumerate Merolt_FCHBA_FCPortStatistics --json >statistics.json
check "counters of 64 bits" 5000000000 "$(property statistics.json TotalCRCErrors)"
ask enumerate Merolt_NIC_PortController --json >controller.json
check "a controller tells the place of its first port" '"0000:3b:00.0"' "$(property controller.json PCIAddress)"

conclude
