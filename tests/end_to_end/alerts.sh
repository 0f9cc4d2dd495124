#!/usr/bin/env bash
# Changes link states in a fleet file and reads what a subscribed listener gets from the running server; then the same
# subscriptions with an ordinary client, over a restart.
# usage: alerts.sh CIMHOST FLEET
set -euo pipefail

# shellcheck source=tests/end_to_end/server.sh
source "$(dirname "${BASH_SOURCE[0]}")/server.sh" "$1" "$2" --state state.json --anonymous-writes

interop=$url/root/PG_InterOp

start_listener() {
    touch alerts listener_errors
    "$cimhost" listen --port 0 --subscribe "http://$url" --json >alerts 2>listener_errors &
    listener=$!
    for _ in $(seq 100); do
        grep -q "subscribed at" listener_errors && return
        sleep 0.1
    done
    cat listener_errors
}

set_link() { "$cimhost" fleet set-link MC1020R4K00317 1 "$@" "$fleet"; }

told=0
alert=
# Sets `alert` to the next one, without what differs from run to run: its time and context are judged by their form.
take_alert() {
    told=$((told + 1))
    for _ in $(seq 100); do
        [[ $(wc -l <alerts) -ge $told ]] && break
        sleep 0.1
    done
    alert=$(sed -n "${told}p" alerts |
        sed -E 's/"IndicationTime":"[0-9]{14}\.[0-9]{6}[+-][0-9]{3}"/"IndicationTime":"TIME"/
                s/"SequenceContext":"[^"]+"/"SequenceContext":"CONTEXT"/')
}

port='root/merolt_cmpi:Merolt_FCHBA_FCPort.SystemCreationClassName=\"Merolt_Adapter_ComputerSystem\",'
port+='SystemName=\"127.0.0.1\",CreationClassName=\"Merolt_FCHBA_FCPort\",'
port+='DeviceID=\"MC1020R4K00317_2000024D10317000_2100024D10317001\"'

storage_alert() { # storage_alert IDENTIFIER STATUS NUMBER SEVERITY
    printf '%s' '{"class":"MeroltCNA_AlertIndication_AdapterStatusChange","properties":{' \
        "\"IndicationIdentifier\":\"$1\",\"CorrelatedIndications\":[\"\"],\"IndicationTime\":\"TIME\"," \
        "\"PerceivedSeverity\":$4,\"OtherSeverity\":null,\"IndicationFilterName\":null,\"Description\":null," \
        "\"AlertingManagedElement\":\"$port\",\"AlertingElementFormat\":2,\"OtherAlertingElementFormat\":null," \
        '"AlertType":5,"OtherAlertType":null,"ProbableCause":66,"ProbableCauseDescription":null,"Trending":null,' \
        '"RecommendedActions":null,' "\"EventID\":\"$port;1\",\"EventTime\":null," \
        '"SystemCreationClassName":"Merolt_Adapter_ComputerSystem","SystemName":"127.0.0.1","ProviderName":"Merolt CNA Provider",' \
        "\"Message\":\"FC Port 2100024D10317001 in HBA MC1020R4K00317 status changed to $2\"," \
        "\"MessageArguments\":[\"2100024D10317001\",\"HBA\",\"MC1020R4K00317\",\"$2\"],\"MessageID\":\"Core9\"," \
        '"OwningEntity":"Merolt",' "\"SequenceContext\":\"CONTEXT\",\"SequenceNumber\":$3}}"
}

value_of() { sed -nE "s/.*\"$1\":\"?([^\",}]*)\"?[,}].*/\1/p" <<<"$2"; }

start_listener
check "one subscription, made by the listener" 1 \
    "$(wbemcli ein "http://$interop:CIM_IndicationSubscription" | grep -c .)"

set_link down --only storage
take_alert
check "a storage port that lost its loop" "$(storage_alert 1 Error 0 6)" "$alert"
set_link up --only storage
take_alert
check "and has it again" "$(storage_alert 2 OK 1 2)" "$alert"

ethernet_alert() { # ethernet_alert WHAT STATE CLASS MESSAGE
    set_link "$2" --only ethernet
    take_alert
    check "$1: class" "$3" "$(value_of class "$alert")"
    check "$1: message" "The network port 024D10317001 has been $4" "$(value_of Message "$alert")"
    check "$1: number" $((told - 1)) "$(value_of SequenceNumber "$alert")"
    check "$1: identifier" "$told" "$(value_of IndicationIdentifier "$alert")"
}
ethernet_alert "an Ethernet link that went down" down Merolt_NIC_IndicationEthernetPortLinkDown disabled
ethernet_alert "and came up" up Merolt_NIC_IndicationEthernetPortLinkUp enabled
ethernet_alert "one that is being tested" testing Merolt_NIC_IndicationEthernetPortLinkDown disabled
ethernet_alert "and is up again" up Merolt_NIC_IndicationEthernetPortLinkUp enabled

kill -INT "$listener"
status=0
wait "$listener" || status=$?
listener=
check "the listener's status" 0 "$status"
check "no gap was seen" "" "$(grep missing listener_errors || true)"
check "the listener left no subscription" "" "$(wbemcli ein "http://$interop:CIM_IndicationSubscription")"
check "and no filter" "" "$(wbemcli ein "http://$interop:CIM_IndicationFilter")"
check "a fleet without such a card" 2 "$(
    "$cimhost" fleet set-link NOBODY 1 down "$fleet" 2>/dev/null && echo 0 || echo $?
)"

# An ordinary client.
keys='SystemCreationClassName="CIM_ComputerSystem",SystemName="host"'
filter="CIM_IndicationFilter.$keys,CreationClassName=\"CIM_IndicationFilter\",Name=\"f\""
make_filter() { # make_filter QUERY
    wbemcli ci "http://$interop:$filter" "SystemCreationClassName=CIM_ComputerSystem,SystemName=host,\
CreationClassName=CIM_IndicationFilter,Name=f,SourceNamespace=root/merolt_cmpi,QueryLanguage=WQL,Query=\"$1\""
}
check "a query that is none" 15 "$(error_of make_filter 'SELECT ALL')"
check "a class that is none" 4 "$(error_of make_filter 'SELECT * FROM No_Class')"
make_filter 'SELECT * FROM CIM_AlertIndication' >/dev/null
check "the same filter again" 11 "$(error_of make_filter 'SELECT * FROM CIM_AlertIndication')"
check "the filter is there" "$interop:$filter" "$(wbemcli ein "http://$interop:CIM_IndicationFilter")"

kill -TERM "$server"
wait "$server" || true
"$cimhost" serve --fleet "$fleet" --listen "${url}" --state state.json \
    --anonymous-writes >again 2>>errors &
server=$!
for _ in $(seq 300); do
    grep -q listening again && break
    sleep 0.1
done
check "it is there after a restart" "$interop:$filter" "$(wbemcli ein "http://$interop:CIM_IndicationFilter")"
wbemcli di "http://$interop:$filter"
check "until it is removed" "" "$(wbemcli ein "http://$interop:CIM_IndicationFilter")"

finish
