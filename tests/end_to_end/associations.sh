#!/usr/bin/env bash
# Follows associations on a running cimhost as a client does, with wbemcli: from an object of every class, in all four
# ways, and through every association class.
# usage: associations.sh CIMHOST FLEET REGISTRATION
set -euo pipefail

# shellcheck source=tests/end_to_end/server.sh
source "$(dirname "${BASH_SOURCE[0]}")/server.sh" "$1" "$2"
registration=$3

class_of() { sed 's|^[^:]*:[0-9]*/[^:]*:\([^.]*\)\..*|\1|' <<<"$1"; }

# Which associations lead away from an object, by the class of each reference.
declare -A seen=()

follow() { # follow PATH
    local path=$1 class association
    class=$(class_of "$path")
    wbemcli ain "http://$path" >associator_names
    wbemcli ai -nl "http://$path" >associators
    wbemcli rin "http://$path" >reference_names
    wbemcli ri -nl "http://$path" >references
    check "$class: an object for each associated name" "$(paths_in associator_names)" "$(paths_in associators)"
    check "$class: an association for each reference name" "$(paths_in reference_names)" "$(paths_in references)"
    while read -r association; do
        seen[$association]=yes
        wbemcli rin -arc "$association" "http://$path" >chosen
        check "$class: references through $association" "$(grep -c ":$association\\." reference_names)" \
            "$(paths_in chosen)"
        wbemcli ain -ac "$association" "http://$path" >chosen
        check "$class: $association leads somewhere" yes "$([[ -s chosen ]] && echo yes)"
        wbemcli ai -nl -ac "$association" "http://$path" >chosen_objects
        check "$class: objects through $association" "$(paths_in chosen)" "$(paths_in chosen_objects)"
        wbemcli ri -nl -arc "$association" "http://$path" >chosen_associations
        check "$class: associations of $association" "$(grep -c ":$association\\." reference_names)" \
            "$(paths_in chosen_associations)"
    done < <(while read -r name; do class_of "$name"; done <reference_names | sort -u)
}

associations=()
while IFS=: read -r class kinds; do
    [[ $class =~ ^Merolt && $kinds == *instance* ]] || continue
    if [[ $kinds == *association* ]]; then
        associations+=("$class")
        continue
    fi
    for place in "$namespace" "$url/root/PG_InterOp"; do
        [[ $place == "$namespace" || $kinds == *root/PG_InterOp* ]] || continue
        follow "$(first_name "$place:$class")"
    done
done <"$registration"

for class in "${associations[@]}"; do
    check "$class: some object leads through it" yes "${seen[$class]:-no}"
done

port=$(first_name "$namespace:Merolt_FCHBA_FCPort")
check "a source whose class is not declared" 5 "$(error_of wbemcli ain "http://$namespace:Merolt_Nothing.Name=\"x\"")"
check "an association that is not declared" 4 "$(error_of wbemcli ain -ac Merolt_Nothing "http://$port")"
check "a plain class as association" 4 "$(error_of wbemcli ain -ac Merolt_FCHBA_FCPort "http://$port")"
check "a result class that is not declared" 4 "$(error_of wbemcli ai -arc Merolt_Nothing "http://$port")"
check "a source without its keys" 4 "$(error_of wbemcli rin "http://$namespace:Merolt_FCHBA_FCPort.DeviceID=\"x\"")"
check "a namespace that is not there" 3 "$(error_of wbemcli ri "http://$url/root/nothing:Merolt_FCHBA_FCPort.A=\"x\"")"
nobody=$(sed 's|,DeviceID="[^"]*"|,DeviceID="nobody"|' <<<"$port")
check "from a port that is not there to its controller" "" \
    "$(wbemcli ain -ac Merolt_FCHBA_PortControllerFCPort "http://$nobody")"
link=$(first_name "$namespace:Merolt_FCHBA_PortControllerFCPort")
check "an association with an end that is not there" 6 \
    "$(error_of wbemcli gi "http://$(sed 's|DeviceID="[^"]*"|DeviceID="nobody"|2' <<<"$link")")"
long=$(sed "s|,DeviceID=\"[^\"]*\"|,DeviceID=\"$(head -c 60000 /dev/zero | tr '\0' '_')\"|" <<<"$port")
check "a key of 60000 characters has no controller" "" \
    "$(wbemcli ain -ac Merolt_FCHBA_PortControllerFCPort "http://$long")"
check "and the server still answers" "$port" "$(first_name "$namespace:Merolt_FCHBA_FCPort")"

finish
