#!/usr/bin/env bash
# merolt-cna-register against recording stand-ins for the tools of CIM servers.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source_folder=$1
mof_folder=$2
# shellcheck source=checks.sh
source "$here/checks.sh"
# shellcheck source=registering.sh
source "$here/registering.sh"

mapfile -t kinds < <(grep -Ev '^(#|$)' "$mof_folder/cimhost.registration")
count=${#kinds[@]}

test_registration_of_openpegasus_has_every_class_with_its_kinds() {
    fresh
    register print openpegasus
    local text=$output line class types spaces expected
    check "print" 0 "$status"
    check "capabilities" "$count" "$(grep -c '^instance of PG_ProviderCapabilities' <<<"$text")"
    check "modules" 1 "$(grep -c '^instance of PG_ProviderModule' <<<"$text")"
    for line in "${kinds[@]}"; do
        class=${line%%:*}
        types=${line%%;*}
        types=${types#*:}
        types=${types/instance/2} types=${types/association/3} types=${types/indication/4} types=${types/method/5}
        types=$(sed 's/^ *//; s/ *$//; s/  */, /g' <<<"$types")
        spaces='"root/merolt_cmpi"'
        if [[ $line == *namespaces=* ]]; then spaces='"root/merolt_cmpi", "root/PG_InterOp"'; fi
        expected=$(printf '    ClassName = "%s";\n    Namespaces = {%s};\n    ProviderType = {%s};' \
            "$class" "$spaces" "$types")
        check "$class, times" 1 "$(grep -cFx "    ClassName = \"$class\";" <<<"$text")"
        check "$class, kinds" "$expected" "$(grep -FxA2 "    ClassName = \"$class\";" <<<"$text")"
    done
}

test_registration_of_sfcb_has_every_class_with_its_kinds() {
    fresh
    register print sfcb
    local text=$output line class types spaces
    check "blocks" "$count" "$(grep -c '^\[' <<<"$text")"
    for line in "${kinds[@]}"; do
        class=${line%%:*}
        types=$(sed 's/.*: *//; s/ *$//' <<<"${line%%;*}")
        spaces=root/merolt_cmpi
        if [[ $line == *namespaces=* ]]; then spaces='root/merolt_cmpi root/interop'; fi
        check "[$class]" "$(printf '[%s]\n   provider: Merolt_CNA_Provider\n   location: Merolt_CNA_Provider\n   type: %s\n   namespace: %s\n   group: Merolt_CNA_Provider\n   unload: never\n#' "$class" "$types" "$spaces")" \
            "$(grep -FxA7 "[$class]" <<<"$text" | sed '/^--$/,$d' | head -8 | sed '/^#/q')"
    done
}

# Superclasses and targets of references have to be there before a class that names them.
check_order() { # check_order WHAT FILE...
    local seen=' ' class
    while read -r class; do
        case $class in
            =*) seen+="${class#=} " ;;
            *) check_contains "$1: before it is referred to, $class" " $class " "$seen" ;;
        esac
    done < <(cat "${@:2}" | sed -nE 's/^class ([A-Za-z0-9_]+).*/=\1/p; s/.*\] (Merolt_[A-Za-z0-9_]+) REF .*/\1/p')
}

test_openpegasus_is_registered() {
    fresh
    register register openpegasus
    check "register" 0 "$status"
    check "state" registered "$(state_of openpegasus)"
    check_contains "told" "registered $count classes" "$output"
    local loaded=$STATE/loaded
    mapfile -t order < <(sed -n 's|^cimmof .* -n root/merolt_cmpi ||p' "$STATE/calls")
    check_order "order of loading" "${order[@]}"
    check "classes of the registration that were loaded" "$count" \
        "$(cat "$loaded"/root/merolt_cmpi/*.mof | sed -n 's/^class \([A-Za-z0-9_]*\).*/\1/p' | sort | uniq -u | wc -l)"
    check "interop classes" "Merolt_NIC_RegisteredProfile Merolt_NIC_ElementConformsToRegisteredProfile" \
        "$(sed -n 's/^class \([A-Za-z0-9_]*\).*/\1/p' "$loaded/root/PG_InterOp/interop.mof" | xargs)"
    check "link" "$scratch/prefix/lib/cmpi/libMerolt_CNA_Provider.so" \
        "$(readlink "$STATE/providers/libMerolt_CNA_Provider.so")"
    register status openpegasus
    check "status" 0 "$status"
}

test_openpegasus_takes_a_second_registration_after_removing_the_first() {
    fresh
    register register openpegasus
    forget_calls
    register register openpegasus
    check "second run" 0 "$status"
    check "removals" 1 "$(calls_of 'cimprovider -r')"
    check "state" registered "$(state_of openpegasus)"
}

test_a_module_that_clients_ask_is_waited_for() {
    fresh
    register register openpegasus
    ln -s /bin/true "$scratch/tools/sleep"
    local command
    for command in register unregister; do
        echo 3 >"$STATE/busy"
        register "$command" openpegasus
        check "$command" 0 "$status"
        check "$command: refusals" 0 "$(cat "$STATE/busy")"
    done
    check "left" "" "$(left_in openpegasus)"
    register register openpegasus
    echo 100 >"$STATE/busy"
    register register openpegasus
    check "busy for ever" 1 "$status"
    check_contains "busy for ever" "Provider is busy" "$output"
    check_contains "busy for ever" "the earlier registration stays" "$output"
    check "busy for ever: state" registered "$(state_of openpegasus)"
    rm "$scratch/tools/sleep"
}

test_openpegasus_forgets_everything() {
    fresh
    register register openpegasus
    register unregister openpegasus
    check "unregister" 0 "$status"
    check "state" "not registered" "$(state_of openpegasus)"
    check "deleted classes" $((count + 2 * 3)) "$(calls_of 'cimcli dc')"
    check "left" "" "$(left_in openpegasus)"
    check "first to go" "$(sed -n 's/^class \([A-Za-z0-9_]*\).*/\1/p' "$mof_folder/merolt_indications.mof" | tail -1)" \
        "$(sed -n 's/^cimcli dc \([A-Za-z0-9_]*\) .*/\1/p' "$STATE/calls" | head -1)"
    check "last to go" "Merolt_NIC_RegisteredProfile" \
        "$(sed -n 's/^cimcli dc \([A-Za-z0-9_]*\) .*/\1/p' "$STATE/calls" | tail -1)"
    register status openpegasus
    check "status" 3 "$status"
    register unregister openpegasus
    check "once more" 0 "$status"
    check_contains "once more" "not registered" "$output"
}

test_interop_namespace_follows_the_option() {
    fresh
    register register openpegasus --interop-namespace root/interop
    check "register" 0 "$status"
    check "classes there" 2 "$(grep -c '"root/interop"' "$STATE/loaded/root/interop/merolt_cna_provider.mof")"
    check "elsewhere" no "$([[ -e $STATE/loaded/root/PG_InterOp ]] && echo yes || echo no)"
}

test_sfcb_is_registered() {
    fresh
    register register sfcb
    check "register" 0 "$status"
    check "state" registered "$(state_of sfcb)"
    check_order "order in the file" "$STATE/stage/mofs/root/merolt_cmpi/merolt_cna_provider.mof"
    check "classes staged" "$count" "$(grep -c '^class ' "$STATE/stage/mofs/root/merolt_cmpi/merolt_cna_provider.mof")"
    check "interop classes staged" 2 \
        "$(grep -c '^class ' "$STATE/stage/mofs/root/interop/merolt_cna_provider_interop.mof")"
    check "repository built" 1 "$(calls_of 'sfcbrepos -f')"
    register status sfcb
    check "status" 0 "$status"
    register register sfcb
    check "second run" 0 "$status"
    check "second run: unstaged before" 2 "$(calls_of sfcbunstage)"
    register unregister sfcb
    check "unregister" 0 "$status"
    check "left" "" "$(left_in sfcb)"
    register status sfcb
    check "status" 3 "$status"
}

# Call after call, until nothing fails any more. The listing that asks what is there may not fail unseen either.
test_failure_at_each_step_is_told_and_leaves_nothing_registered() { # SERVER
    local server=$1 number=0
    while :; do
        number=$((number + 1))
        fresh
        FAIL_AT=$number
        register register "$server"
        [[ $(wc -l <"$STATE/calls") -ge $number ]] || break
        # A server that does not tell what it has may tell what it will have.
        if grep -q '^cimconfig .*-c$' <(sed -n "${number}p" "$STATE/calls"); then
            check "no current value" "0 registered" "$status $(state_of "$server")"
            continue
        fi
        check "$server, call $number fails" 1 "$status"
        check_contains "$server, call $number fails" "no luck today" "$output"
        check "$server, call $number fails: left" "" "$(left_in "$server")"
    done
    check "$server: without a failure" 0 "$status"
    check "$server: steps that were tried" yes "$([[ $number -gt 3 ]] && echo yes || echo no)"
}

# interrupt SERVER SIGNAL STATUS TO NUMBER
interrupt() {
    SIGNAL_AT=$5 SIGNAL=$2 SIGNAL_TO=$4
    register register "$1"
    SIGNAL_AT=0
    check "$1, SIG$2 to the $4 in call $5" "$3" "$status"
    check_contains "$1, SIG$2 to the $4 in call $5" "interrupted by SIG$2" "$output"
}

test_a_signal_at_each_step_is_told_and_leaves_nothing() { # SERVER SIGNAL STATUS TO [EVERY]
    local number steps
    fresh
    register register "$1"
    steps=$(wc -l <"$STATE/calls")
    for number in $(seq 1 "${5:-1}" "$steps"); do
        fresh
        interrupt "${@:1:4}" "$number"
        check "$1, SIG$2 to the $4 in call $number: left" "" "$(left_in "$1")"
    done
    register register "$1"
    check "$1, once more after a SIG$2" "0 registered" "$status $(state_of "$1")"
}

test_a_signal_in_a_second_registration_leaves_the_first_or_nothing() {
    local number server
    for server in openpegasus sfcb; do
        for number in 1 2 3 4; do
            fresh
            register register "$server"
            forget_calls
            interrupt "$server" TERM 143 parent "$number"
            # Until the first change, which asks for none where the server is asked what it has and where it looks.
            if [[ $server == openpegasus && $number -le 2 ]]; then
                check "the first registration" registered "$(state_of "$server")"
            else
                check "$server, second registration, call $number: left" "" "$(left_in "$server")"
            fi
        done
        check "$server: the repository without it" yes \
            "$([[ $server == openpegasus || $(tail -n 1 "$STATE/calls") == "sfcbrepos -f"* ]] && echo yes)"
    done
}

# One that was not finished is finished by the next.
test_a_failing_unregistration_is_told_and_can_be_repeated() { # SERVER
    local server=$1 number=0
    while [[ $number -lt 8 ]]; do
        number=$((number + 1))
        fresh
        register register "$server"
        forget_calls
        FAIL_AT=$number
        register unregister "$server"
        [[ $(wc -l <"$STATE/calls") -ge $number ]] || break
        FAIL_AT=0
        case $(sed -n "${number}p" "$STATE/calls") in
            "cimprovider -d"*) check "$server, a module that is disabled" "0 " "$status $(left_in "$server")" ;;
            cimconfig*) check "$server, no current value" "0 " "$status $(left_in "$server")" ;;
            *)
                check "$server, unregister, call $number fails" 1 "$status"
                check_contains "$server, unregister, call $number fails" "no luck today" "$output"
                ;;
        esac
        register unregister "$server"
        check "$server, unregistered again after call $number" "0 " "$status $(left_in "$server")"
    done
    check "$server: steps that were tried" yes "$([[ $number -gt 2 ]] && echo yes)"
}

# What cannot be removed goes on as before the attempt.
test_an_earlier_registration_that_cannot_be_removed_stays() {
    local before
    fresh
    register register openpegasus
    FAIL_FOR='cimprovider -r'
    register register openpegasus
    check "openpegasus" 1 "$status"
    check_contains "openpegasus" "the earlier registration stays" "$output"
    check "the module" "Merolt_CNA_ProviderModule OK" "$(cat "$STATE/module")"
    FAIL_FOR='cimprovider -[re]'
    register register openpegasus
    check_contains "a module that cannot be enabled" "cimprovider -e -m Merolt_CNA_ProviderModule" "$output"
    register register openpegasus
    check "a module that was disabled before" "Merolt_CNA_ProviderModule Stopped" "$(cat "$STATE/module")"

    fresh
    register register sfcb
    before=$(cd "$STATE/stage" && find . -type f -exec cksum {} +)
    FAIL_FOR='sfcbunstage .*-r '
    register register sfcb --interop-namespace interop
    check "sfcb" 1 "$status"
    check_contains "sfcb" "the earlier registration stays" "$output"
    check "what is staged" "$before" "$(cd "$STATE/stage" && find . -type f -exec cksum {} +)"
}

# What is staged is copied before it is touched, wherever temporary files lie.
test_what_is_staged_is_kept_or_the_registration_stays() {
    local before
    fresh
    register register sfcb
    staged() { (cd "$STATE/stage" && find . -type f -exec cksum {} +); }
    before=$(staged)
    forget_calls
    printf '#!/bin/sh\nexit 1\n' >"$scratch/tools/cp"
    chmod 755 "$scratch/tools/cp"
    register register sfcb
    check "copies that fail" 1 "$status"
    check_contains "copies that fail" "the staging area cannot be read" "$output"
    check "copies that fail: calls" "" "$(cat "$STATE/calls")"
    rm "$scratch/tools/cp"

    cd "$scratch"
    FAIL_FOR='sfcbunstage .*-r '
    TMPDIR=tmp register register sfcb
    cd "$OLDPWD"
    check_contains "a relative folder of temporary files" "the earlier registration stays" "$output"
    check "what is staged" "$before" "$(staged)"
}

# How `register` calls the machine that it warns of; nothing if it does not.
warned_name() {
    fresh
    register register "${1:-openpegasus}"
    check "registered all the same" "0 registered" "$status $(state_of "${1:-openpegasus}")"
    sed -n 's/.*clients will know this machine as \([^,]*\),.*/\1/p' <<<"$output"
}

test_a_loopback_name_is_told_at_registration_and_a_setting_mends_it() {
    local settings=$scratch/cim-provider.conf server address
    for server in openpegasus sfcb; do
        known_as 127.0.1.1
        check "$server: as Debian installs a host" 127.0.1.1 "$(warned_name "$server")"
        known_as 192.0.2.10
        check "$server: an address of its own" "" "$(warned_name "$server")"
    done
    known_as
    check "no address" "" "$(warned_name)"
    known_as 127.0.1.1
    echo 'SystemName= san1.example.org ' >"$settings"
    check "a setting" "" "$(warned_name)"
    for address in localhost ::1 127.0.0.1; do
        printf 'InstallLocation=/x\nSystemName=%s\nSystemName=later\n' "$address" >"$settings"
        check "set to $address" "$address" "$(warned_name)"
    done
    rm "$settings"
    known_as 192.0.2.10
}

test_a_system_name_that_the_provider_does_not_take_is_told_at_registration() {
    local settings=$scratch/cim-provider.conf name long
    printf -v long '%065d' 0
    for name in 'san"1' 'san_1' 'two words' $'tab\tname' 'ümlaut' "$long"; do
        echo "SystemName=$name" >"$settings"
        fresh
        register register openpegasus
        check "$name" "0 registered" "$status $(state_of openpegasus)"
        check_contains "$name" "$settings: SystemName=$name is not taken" "$output"
    done
    echo "SystemName=${long#0}" >"$settings"
    fresh
    register register openpegasus
    check "64 characters" "" "$(grep SystemName <<<"$output")"
    echo 'SystemName=  ' >"$settings"
    fresh
    register register openpegasus
    check_contains "no name" "$settings: SystemName= has no name behind it" "$output"
    rm "$settings"
}

test_paths_may_hold_blanks() {
    local state=$STATE
    export STATE="$scratch/a state"
    fresh
    cp -r "$mof_folder" "$STATE/class definitions"
    register register openpegasus --data "$STATE/class definitions"
    check "register" "0 registered" "$status $(state_of openpegasus)"
    check_contains "told" "registered $count classes" "$output"
    check "link" "$scratch/prefix/lib/cmpi/libMerolt_CNA_Provider.so" \
        "$(readlink "$STATE/providers/libMerolt_CNA_Provider.so")"
    register unregister openpegasus --data "$STATE/class definitions"
    check "unregister" "0 " "$status $(left_in openpegasus)"
    rm -r "$STATE"
    export STATE=$state
}

test_unregistering_finds_the_interop_namespace() {
    local server space
    for server in openpegasus sfcb; do
        for space in interop root/interop root/PG_InterOp; do
            fresh
            register register "$server" --interop-namespace "$space"
            register unregister "$server"
            check "$server, $space" "0 " "$status $(left_in "$server")"
        done
        fresh
        register register "$server" --interop-namespace interop
        register register "$server"
        register unregister "$server"
        check "$server, registered for two namespaces" "0 " "$status $(left_in "$server")"
    done
}

test_options_for_certificates_reach_the_client() {
    fresh
    touch "$scratch/outside/ca.pem"
    register check openpegasus
    check "without an option" "$(wc -l <"$STATE/calls")" "$(grep -c '^wbemcli \(ein\|gi\) http://' "$STATE/calls")"
    forget_calls
    register check openpegasus --cacert "$scratch/outside/ca.pem" --url https://localhost:5989
    check "a certificate" "$(wc -l <"$STATE/calls")" \
        "$(grep -c "^wbemcli \(ein\|gi\) -cacert $scratch/outside/ca.pem https://" "$STATE/calls")"
    forget_calls
    register check openpegasus --no-verify --url https://localhost:5989
    check "any certificate" "$(wc -l <"$STATE/calls")" \
        "$(grep -c '^wbemcli \(ein\|gi\) -noverify https://' "$STATE/calls")"
    check "calls were made" yes "$([[ -s $STATE/calls ]] && echo yes)"
    register check openpegasus --cacert "$scratch/outside/none.pem"
    check "a file that is not there" 2 "$status"
}

test_check_knows_what_fails_on_a_healthy_server() {
    local two_objects=Merolt_NIC_IPProtocolEndpointCapabilitiesIPProtocolEndpoint
    fresh
    FAIL_FOR="wbemcli gi .*:$two_objects\\."
    FAIL_TEXT='* wbemcli: Cim: (1) CIM_ERR_FAILED: "Too many objects delivered by provider"'
    register check openpegasus
    check "two objects by contract" 0 "$status"
    check_contains "two objects by contract" "answers   $two_objects, getInstance with two objects as by contract" "$output"
    check_contains "two objects by contract" " 0 have nothing to show, 0 fail" "$output"
    FAIL_TEXT='* wbemcli: Cim: (1) CIM_ERR_FAILED: "no luck"'
    register check openpegasus
    check "another failure of that class" 1 "$status"
    check_contains "another failure of that class" " 0 have nothing to show, 1 fail" "$output"
    FAIL_FOR='wbemcli gi .*:Merolt_FCHBA_FCPort\.'
    FAIL_TEXT='* wbemcli: Cim: (1) CIM_ERR_FAILED: "Too many objects delivered by provider"'
    register check openpegasus
    check "two objects of another class" 1 "$status"
    check_contains "two objects of another class" " 1 fail" "$output"
    FAIL_TEXT='* wbemcli: Parse Exception: Unknown attribute in list for PROPERTY (EMBEDDEDOB)'
    register check openpegasus
    check "an embedded object" 0 "$status"
    check_contains "an embedded object" \
        "answers   Merolt_FCHBA_FCPort, with an embedded object that wbemcli cannot read" "$output"
    FAIL_TEXT='* wbemcli: Parse Exception: Unknown attribute in list for PROPERTY (NONE)'
    register check openpegasus
    check "something else that wbemcli cannot read" 1 "$status"
}

test_missing_tools_are_named() {
    local tool server
    for tool in cimmof:openpegasus cimprovider:openpegasus sfcbstage:sfcb sfcbunstage:sfcb sfcbrepos:sfcb; do
        server=${tool#*:} tool=${tool%:*}
        fresh
        rm "$scratch/tools/$tool"
        register register "$server"
        check "without $tool" 1 "$status"
        check_contains "without $tool" "$tool is not there" "$output"
        check "without $tool, calls" "" "$(cat "$STATE/calls")"
        register register "$server" --maintainer-script
        check "without $tool in a maintainer script" 0 "$status"
        ln -s "$stand_in" "$scratch/tools/$tool"
    done
}

test_unregister_where_it_cannot_work_never_fails_a_maintainer_script() {
    fresh
    register register openpegasus
    FAIL_FOR='cimprovider -r'
    register unregister openpegasus
    check "unregister" 1 "$status"
    register unregister openpegasus --if-registered --maintainer-script
    check "in a maintainer script" 0 "$status"
    check_contains "in a maintainer script" "no luck today" "$output"
    fresh
    register unregister sfcb --if-registered --maintainer-script
    check "nothing to undo" "0 " "$status $output"
}

test_classes_that_cannot_be_deleted_are_told() {
    fresh
    register register openpegasus
    FAIL_FOR='cimcli dc Merolt_FCHBA_FCPort ' FAIL_TEXT='access denied'
    register unregister openpegasus
    check "status" 1 "$status"
    check_contains "which" "Merolt_FCHBA_FCPort: access denied" "$output"
    FAIL_FOR='cimcli dc' FAIL_TEXT='CIM_ERR_NOT_FOUND: The requested object could not be found'
    register unregister openpegasus
    check "classes that are gone" 0 "$status"
}

test_missing_schema_is_named() {
    fresh
    FAIL_FOR='cimmof .*merolt_server.mof' FAIL_TEXT='CIM_ERR_INVALID_SUPERCLASS: CIM_ComputerSystem'
    register register openpegasus
    check "status" 1 "$status"
    check_contains "superclass" "lacks classes of the DMTF (CIM_ComputerSystem ), --schema" "$output"

    mkdir -p "$scratch/schema"
    printf 'class CIM_ManagedElement {\n};\n' >"$scratch/schema/CIM_Schema.mof"
    fresh
    register register openpegasus --schema "$scratch/schema"
    check "incomplete schema" 1 "$status"
    check_contains "incomplete schema" "CIM_FCPort " "$output"
    check "incomplete schema, calls" "" "$(cat "$STATE/calls")"

    cp "$mof_folder"/ancestors/*.mof "$scratch/schema/"
    FAIL_AT=3 FAIL_TEXT='CIM_ERR_INVALID_SUPERCLASS'
    register register openpegasus --schema "$scratch/schema"
    check "schema given" 0 "$status"
    check "schema loaded" 1 "$(grep -c "^cimmof .*-I $scratch/schema -n root/merolt_cmpi $scratch/schema/CIM_Schema.mof" "$STATE/calls")"
    fresh
    register register sfcb --schema "$scratch/schema"
    check "schema for sfcb" "0 registered" "$status $(state_of sfcb)"
}

# The archives of the DMTF have the version in the name of their main file; sfcb knows one name without it.
test_sfcb_takes_the_schema_under_any_name_and_in_any_folder() {
    local schema="$scratch/a schema"
    mkdir -p "$schema/Core"
    cp "$mof_folder"/ancestors/*.mof "$schema/Core/"
    touch "$schema/Core/core.mof"
    echo '#pragma include ("Core/core.mof")' >"$schema/cim_schema_2.41.0.mof"
    fresh
    rm "$STATE/share/CIM_Schema.mof"
    register register sfcb
    check "no schema" "1 " "$status $(left_in sfcb)"
    check_contains "no schema" "--schema FOLDER tells where it is" "$output"
    register register sfcb --schema "$schema"
    check "a schema" "0 registered" "$status $(state_of sfcb)"
    check "its folder" "$(printf 'Core\ncim_schema_2.41.0.mof')" "$(LC_ALL=C ls "$schema")"
    (cd "$scratch" && register register sfcb --schema "a schema" && check "a relative folder" 0 "$status" &&
        [[ $failures -eq 0 ]]) || failures=$((failures + 1))
    register unregister sfcb
    check "unregister without the schema" 1 "$status"
    check_contains "unregister without the schema" "--schema if it has no CIM Schema" "$output"
    fresh
    rm "$STATE/share/CIM_Schema.mof"
    register register sfcb --schema "$schema"
    register unregister sfcb --schema "$schema"
    check "unregister" "0 " "$status $(left_in sfcb)"
    rm -r "$schema"
}

test_sfcb_is_told_that_its_tools_take_no_blanks() {
    fresh
    run "$scratch/prefix/sbin/merolt-cna-register" register sfcb --tools "$scratch/tools" --staging "$STATE/a stage"
    check "status" 1 "$status"
    check_contains "status" "sfcb's tools take no blanks in a path: $STATE/a stage" "$output"
    check "calls" "" "$(cat "$STATE/calls")"
}

test_sfcb_tells_its_own_staging_area_and_configuration() {
    local sfcb=$scratch/sfcb-prefix tool
    fresh
    mkdir -p "$sfcb"/{bin,etc/sfcb}
    for tool in sfcbstage sfcbunstage sfcbrepos; do ln -s "$stand_in" "$sfcb/bin/$tool"; done
    printf 'httpPort: 5988\nproviderDirs: %s %s\n' "$STATE/none" "$STATE/providers" >"$sfcb/etc/sfcb/sfcb.cfg"
    run "$scratch/prefix/sbin/merolt-cna-register" status sfcb --tools "$sfcb/bin"
    check "not yet" 3 "$status"
    run "$scratch/prefix/sbin/merolt-cna-register" register sfcb --tools "$sfcb/bin" --staging "$STATE/stage"
    check "register" 0 "$status"
    check "link" "$scratch/prefix/lib/cmpi/libMerolt_CNA_Provider.so" \
        "$(readlink "$STATE/providers/libMerolt_CNA_Provider.so")"
    run "$scratch/prefix/sbin/merolt-cna-register" status sfcb --tools "$sfcb/bin"
    check "where it is" "0 registered with sfcb: $STATE/stage/regs/merolt_cna_provider.reg" "$status $output"
    rm -r "$sfcb"
}

test_a_stopped_server_is_told_and_its_repository_can_be_written() {
    fresh
    FAIL_FOR='cimprovider -l' FAIL_TEXT='Cannot connect to local CIM server'
    register register openpegasus
    check "stopped" 1 "$status"
    check_contains "stopped" "start it first" "$output"
    fresh
    mkdir -p "$STATE/pegasus/repository"
    register register openpegasus --offline --repository "$STATE/pegasus"
    check "offline" 0 "$status"
    check "calls of tools that need the server" 0 "$(calls_of '\(cimmof\|cimprovider\)')"
    register register openpegasus --offline
    check "offline without a repository" 2 "$status"
}

test_wrong_calls_are_told() {
    local call
    for call in "" register "register other" "frobnicate sfcb" "register sfcb more" "register sfcb --unknown" \
        "register sfcb --schema" "register sfcb --offline" "print sfcb --interop-namespace a;b"; do
        # shellcheck disable=SC2086
        run dash "$scratch/prefix/sbin/merolt-cna-register" $call
        check "status of: $call" 2 "$status"
    done
    printf 'Merolt_X: instance\nMerolt_X: instance\n' >"$scratch/outside/cimhost.registration"
    cp "$mof_folder/merolt_server.mof" "$scratch/outside/"
    register print sfcb --data "$scratch/outside"
    check "a class twice" 1 "$status"
    check_contains "a class twice" "cimhost.registration:2: Merolt_X is registered twice" "$output"
    printf 'Merolt_X: instances\n' >"$scratch/outside/cimhost.registration"
    register print sfcb --data "$scratch/outside"
    check_contains "an unknown kind" "unknown kind: instances" "$output"
}

test_registration_of_openpegasus_has_every_class_with_its_kinds
test_registration_of_sfcb_has_every_class_with_its_kinds
test_openpegasus_is_registered
test_openpegasus_takes_a_second_registration_after_removing_the_first
test_openpegasus_forgets_everything
test_interop_namespace_follows_the_option
test_sfcb_is_registered
test_failure_at_each_step_is_told_and_leaves_nothing_registered openpegasus
test_failure_at_each_step_is_told_and_leaves_nothing_registered sfcb
test_a_signal_at_each_step_is_told_and_leaves_nothing openpegasus INT 130 group
test_a_signal_at_each_step_is_told_and_leaves_nothing openpegasus TERM 143 parent 3
test_a_signal_at_each_step_is_told_and_leaves_nothing sfcb INT 130 group
test_a_signal_at_each_step_is_told_and_leaves_nothing sfcb TERM 143 parent
test_a_signal_at_each_step_is_told_and_leaves_nothing sfcb HUP 129 group
test_a_signal_in_a_second_registration_leaves_the_first_or_nothing
test_a_failing_unregistration_is_told_and_can_be_repeated openpegasus
test_a_failing_unregistration_is_told_and_can_be_repeated sfcb
test_an_earlier_registration_that_cannot_be_removed_stays
test_what_is_staged_is_kept_or_the_registration_stays
test_paths_may_hold_blanks
test_unregistering_finds_the_interop_namespace
test_options_for_certificates_reach_the_client
test_missing_tools_are_named
test_unregister_where_it_cannot_work_never_fails_a_maintainer_script
test_classes_that_cannot_be_deleted_are_told
test_missing_schema_is_named
test_sfcb_takes_the_schema_under_any_name_and_in_any_folder
test_sfcb_is_told_that_its_tools_take_no_blanks
test_sfcb_tells_its_own_staging_area_and_configuration
test_a_stopped_server_is_told_and_its_repository_can_be_written
test_wrong_calls_are_told
conclude
