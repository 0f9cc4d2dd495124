#!/usr/bin/env bash
# Asks a running cimhost for every class as a client does, with wbemcli, and for what it has to refuse.
# usage: every_class.sh CIMHOST FLEET REGISTRATION
set -euo pipefail

cimhost=$1
fleet=$2
registration=$3

folder=$(mktemp -d)
cd "$folder"
printf '%s\n' ErrorLog=1 LinkStatusPollIntervalSeconds=0 >meroltcna.properties
"$cimhost" serve --fleet "$fleet" --listen 127.0.0.1:0 >output 2>errors &
server=$!
stop() {
    kill "$server" 2>/dev/null || true
    rm -rf "$folder"
}
trap stop EXIT

failures=0
passed=0
check() { # check WHAT EXPECTED ACTUAL
    if [[ $2 == "$3" ]]; then
        passed=$((passed + 1))
    else
        failures=$((failures + 1))
        printf 'FAILED %s\n  expected: %s\n  actual:   %s\n' "$1" "$2" "$3"
    fi
}

url=
for _ in $(seq 300); do
    url=$(sed -n 's|.*listening on http://\([^, ]*\).*|\1|p' output)
    [[ -n $url ]] && break
    kill -0 "$server" 2>/dev/null || { cat errors; exit 1; }
    sleep 0.1
done
[[ -n $url ]] || { printf 'the server did not say where it listens\n'; exit 1; }
namespace=$url/root/merolt_cmpi

# The number in brackets of a CIM error that wbemcli prints.
error_of() { "$@" 2>&1 | sed -n 's/.*Cim: (\([0-9]*\)).*/\1/p' | head -1; }

while IFS=: read -r class kinds; do
    [[ $class =~ ^Merolt && $kinds == *instance* ]] || continue
    wbemcli ein "http://$namespace:$class" >names
    wbemcli ei -nl "http://$namespace:$class" >instances
    check "$class: an instance for each name" "$(grep -c "^$namespace:$class" names)" \
        "$(grep -c "^$namespace:$class" instances)"
    check "$class: has instances on the demonstration fleet" yes "$([[ -s names ]] && echo yes)"
    first=$(head -1 names)
    check "$class: its first name leads to its instance" "$first" "$(wbemcli gi -nl "http://$first" | head -1)"
    check "$class: nothing can be deleted" 7 "$(error_of wbemcli di "http://$first")"
done <"$registration"

computer=$(wbemcli ein "http://$namespace:Merolt_Adapter_ComputerSystem")
nobody=$(sed 's|,Name="[^"]*"|,Name="nobody"|' <<<"$computer")
check "a key that names nothing" 6 "$(error_of wbemcli gi "http://$nobody")"
check "a class that is not declared" 5 "$(error_of wbemcli ei "http://$namespace:Merolt_Nothing")"
check "a namespace that is not there" 3 "$(error_of wbemcli ei "http://$url/root/nothing:Merolt_FCHBA_FCPort")"
check "a base class finds the ports of both sides" "$(($(wbemcli ein "http://$namespace:Merolt_FCHBA_FCPort" | wc -l) +
    $(wbemcli ein "http://$namespace:Merolt_NIC_EthernetPort2" | wc -l) +
    $(wbemcli ein "http://$namespace:Merolt_NIC_NetworkPort" | wc -l)))" \
    "$(wbemcli ein "http://$namespace:CIM_NetworkPort" | wc -l)"

kill -TERM "$server"
status=0
wait "$server" || status=$?
check "the server's status after SIGTERM" 0 "$status"

printf '%d passed, %d failed\n' "$passed" "$failures"
[[ $failures -eq 0 ]]
