#!/usr/bin/env bash
# Asks a running cimhost for every class as a client does, with wbemcli, and for what it has to refuse.
# usage: every_class.sh CIMHOST FLEET REGISTRATION
set -euo pipefail

# shellcheck source=tests/end_to_end/server.sh
source "$(dirname "${BASH_SOURCE[0]}")/server.sh" "$1" "$2" --anonymous-writes
registration=$3

ask_for() { # ask_for PLACE CLASS
    local place=$1 class=$2 first
    wbemcli ein "http://$place:$class" >names
    wbemcli ei -nl "http://$place:$class" >instances
    check "$class: an instance for each name" "$(grep -c "^$place:$class" names)" \
        "$(grep -c "^$place:$class" instances)"
    check "$class: has instances on the demonstration fleet" yes "$([[ -s names ]] && echo yes)"
    first=$(head -1 names)
    if [[ $class == Merolt_NIC_IPProtocolEndpointCapabilitiesIPProtocolEndpoint ]]; then
        check "$class: the provider puts another object in front of its instance" 1 \
            "$(error_of wbemcli gi -nl "http://$first")"
    else
        check "$class: its first name leads to its instance" "$first" "$(wbemcli gi -nl "http://$first" | head -1)"
    fi
    check "$class: nothing can be deleted" 7 "$(error_of wbemcli di "http://$first")"
}

while IFS=: read -r class kinds; do
    [[ $class =~ ^Merolt && $kinds == *instance* ]] || continue
    ask_for "$namespace" "$class"
    if [[ $kinds == *root/PG_InterOp* ]]; then ask_for "$url/root/PG_InterOp" "$class"; fi
done <"$registration"
check "a class that is served in the namespace of the adapters alone has no instances in the other" "" \
    "$(wbemcli ein "http://$url/root/PG_InterOp:Merolt_FCHBA_FCPort")"

computer=$(wbemcli ein "http://$namespace:Merolt_Adapter_ComputerSystem")
nobody=$(sed 's|,Name="[^"]*"|,Name="nobody"|' <<<"$computer")
check "a key that names nothing" 6 "$(error_of wbemcli gi "http://$nobody")"
check "a class that is not declared" 5 "$(error_of wbemcli ei "http://$namespace:Merolt_Nothing")"
check "a namespace that is not there" 3 "$(error_of wbemcli ei "http://$url/root/nothing:Merolt_FCHBA_FCPort")"
check "a base class finds the ports of both sides" "$(($(wbemcli ein "http://$namespace:Merolt_FCHBA_FCPort" | wc -l) +
    $(wbemcli ein "http://$namespace:Merolt_NIC_EthernetPort2" | wc -l) +
    $(wbemcli ein "http://$namespace:Merolt_NIC_NetworkPort" | wc -l)))" \
    "$(wbemcli ein "http://$namespace:CIM_NetworkPort" | wc -l)"

finish
