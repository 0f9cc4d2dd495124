#!/usr/bin/env bash
# The library among the server's providers: which folder gets the link, whose link it is, and what becomes of it.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source_folder=$1
mof_folder=$2
# shellcheck source=checks.sh
source "$here/checks.sh"
# shellcheck source=registering.sh
source "$here/registering.sh"

library=libMerolt_CNA_Provider.so
ours=$scratch/prefix/lib/cmpi/$library

test_another_library_of_that_name_is_left_alone() {
    fresh
    echo theirs >"$STATE/providers/$library"
    register register openpegasus
    check "status" 1 "$status"
    check_contains "told" "is another library" "$output"
    check "theirs" theirs "$(cat "$STATE/providers/$library")"
    check "state" "not registered" "$(state_of openpegasus)"

    # Nor does an earlier registration end for it.
    local server
    for server in openpegasus sfcb; do
        fresh
        register register "$server"
        rm "$STATE/providers/$library"
        echo theirs >"$STATE/providers/$library"
        register register "$server"
        check "$server, again" "1 registered" "$status $(state_of "$server")"
    done
}

test_links_are_replaced_only_where_they_are_ours_or_lead_nowhere() {
    local link=$STATE/providers/$library
    fresh
    ln -s "$library.0" "$link"
    register register openpegasus
    check "a link that leads nowhere" "0 $ours" "$status $(readlink "$link")"
    fresh
    ln -s "$library.0" "$link"
    touch "$link.0"
    register register openpegasus
    check "a link of somebody else" "1 $library.0" "$status $(readlink "$link")"
    check_contains "a link of somebody else" "is another library" "$output"
    fresh
    mkdir -p "$scratch/prefix/lib64/cmpi"
    touch "$scratch/prefix/lib64/cmpi/$library"
    ln -s "$scratch/prefix/lib64/cmpi/$library" "$link"
    register register openpegasus
    check "a link of ours" "0 $ours" "$status $(readlink "$link")"
    rm -r "$scratch/prefix/lib64"
}

# A server takes the first library that it finds under the name.
test_several_folders_of_providers_are_looked_at_in_their_order() {
    local first=$STATE/first second=$STATE/second
    two_folders() {
        fresh
        mkdir "$first" "$second"
        export PROVIDER_FOLDERS=$first:$second
    }
    two_folders
    register register openpegasus
    check "the first folder gets the link" "0 $ours" "$status $(readlink "$first/$library")"
    register unregister openpegasus
    check "which goes again" "" "$(find "$first" "$second" -name "$library")"

    two_folders
    ln -s "$ours" "$second/$library"
    register register openpegasus
    check "the second folder has it" "0 no" "$status $([[ -e $first/$library ]] && echo yes || echo no)"

    two_folders
    echo theirs >"$first/$library"
    ln -s "$ours" "$second/$library"
    register register openpegasus
    check "another library in the first" "1 theirs" "$status $(cat "$first/$library")"
    check_contains "another library in the first" "$first/$library is another library" "$output"

    two_folders
    ln -s "$ours" "$first/$library"
    echo theirs >"$second/$library"
    register register openpegasus
    check "another library behind it" "0 theirs" "$status $(cat "$second/$library")"

    # Whether what it leads to is there or gone.
    local earlier=$scratch/prefix/lib64/cmpi/$library
    mkdir -p "${earlier%/*}"
    touch "$earlier"
    for earlier in "$earlier" "$scratch/prefix/lib/gone/$library"; do
        two_folders
        ln -s "$earlier" "$first/$library"
        ln -s "$ours" "$second/$library"
        register register openpegasus
        check "a link of an earlier installation in the first" "0 $ours" "$status $(readlink "$first/$library")"
    done
    rm -r "$scratch/prefix/lib64"

    two_folders
    rmdir "$first"
    register register openpegasus
    check "a first folder that is not there" "0 $ours" "$status $(readlink "$second/$library")"
    unset PROVIDER_FOLDERS
}

# OpenPegasus may name folders that begin at its own, and tells nothing of the present while it is stopped.
test_folders_that_begin_at_the_server_are_found() {
    local home=$scratch/pegasus tool
    pegasus() { # pegasus COMMAND [OPTION...]
        run env PEGASUS_HOME="$pegasus_home" "$scratch/prefix/sbin/merolt-cna-register" "$1" openpegasus \
            --tools "$home/bin" "${@:2}"
    }
    mkdir -p "$home/bin" "$home/lib"
    for tool in cimmof cimmofl cimprovider cimcli cimconfig; do ln -s "$stand_in" "$home/bin/$tool"; done
    local pegasus_home
    for pegasus_home in "$home" ""; do
        fresh
        export PROVIDER_FOLDERS=lib
        pegasus register
        check "PEGASUS_HOME=$pegasus_home" "0 $ours" "$status $(readlink "$home/lib/$library")"
        pegasus unregister
        check "PEGASUS_HOME=$pegasus_home, unregistered" "0 no" \
            "$status $([[ -L $home/lib/$library ]] && echo yes || echo no)"
    done

    fresh
    PROVIDER_FOLDERS=none:lib
    mkdir -p "$STATE/repositories/repository"
    STOPPED=yes pegasus register --offline --repository "$STATE/repositories"
    check "a stopped server" "0 $ours" "$status $(readlink "$home/lib/$library")"
    rm "$home/lib/$library"

    STOPPED='unset' pegasus register --offline --repository "$STATE/repositories"
    check "a stopped server that nobody configured" "1 no" \
        "$status $([[ -L $home/lib/$library ]] && echo yes || echo no)"
    check_contains "a stopped server that nobody configured" "--provider-folder FOLDER tells" "$output"
    STOPPED='unset' pegasus register --offline --repository "$STATE/repositories" --provider-folder "$home/lib"
    check "the same with its folder" "0 $ours" "$status $(readlink "$home/lib/$library")"
    rm "$home/lib/$library"

    fresh
    PROVIDER_FOLDERS=none
    pegasus register
    check "no folder that is there" "1 not registered" "$status $(state_of openpegasus)"
    check_contains "no folder that is there" "in folders that are not there: $home/none" "$output"
    PROVIDER_FOLDERS=lib
    mkdir -p "$scratch/elsewhere"
    pegasus register --provider-folder "$scratch/elsewhere"
    check "a folder that the server does not look in" "1 not registered" "$status $(state_of openpegasus)"
    check_contains "a folder that the server does not look in" "but in $home/lib" "$output"
    cd "$home"
    pegasus register --provider-folder lib
    cd "$OLDPWD"
    check "a folder that is told from where one stands" "0 $ours" "$status $(readlink "$home/lib/$library")"
    unset PROVIDER_FOLDERS
    rm -r "$home" "$scratch/elsewhere"
}

# Registered, the provider would be looked for in vain.
test_nothing_is_registered_that_the_server_would_not_find() {
    local server
    for server in openpegasus sfcb; do
        fresh
        rmdir "$STATE/providers"
        register register "$server"
        check "$server, a folder that is not there" "1 not registered" "$status $(state_of "$server")"

        fresh
        mv "$ours" "$scratch/hidden"
        register register "$server"
        check "$server, a library that is not installed" "1 not registered" "$status $(state_of "$server")"
        check_contains "$server, a library that is not installed" "is not installed below $scratch/prefix" "$output"
        touch "$STATE/providers/$library"
        register register "$server"
        check "$server, one that somebody put there" "0 registered" "$status $(state_of "$server")"
        mv "$scratch/hidden" "$ours"
    done
    fresh
    FAIL_FOR='cimconfig'
    register register openpegasus
    check "folders that nobody tells" "1 not registered" "$status $(state_of openpegasus)"
    check_contains "folders that nobody tells" "--provider-folder FOLDER tells" "$output"
    if [[ -e /etc/sfcb/sfcb.cfg ]]; then return; fi
    fresh
    run "$scratch/prefix/sbin/merolt-cna-register" register sfcb --tools "$scratch/tools" --staging "$STATE/stage"
    check "folders that sfcb does not tell" "1 not registered" "$status $(state_of sfcb)"
}

# Without its server nobody knows what a repository holds, so what an earlier run did is not touched.
test_a_failure_offline_undoes_what_this_run_did_and_no_more() {
    local link=$STATE/providers/$library step earlier=$scratch/prefix/lib/gone/cmpi/$library
    offline() { register register openpegasus --offline --repository "$STATE/pegasus"; }
    for step in merolt_server.mof interop.mof merolt_cna_provider.mof; do
        fresh
        mkdir -p "$STATE/pegasus/repository"
        FAIL_FOR="cimmofl .*/$step"
        offline
        check "$step fails" "1 no" "$status $([[ -L $link ]] && echo yes || echo no)"
        ln -s "$earlier" "$link"
        offline
        check "$step fails, a link of before" "1 $earlier" "$status $(readlink "$link")"
        FAIL_FOR=''
        offline
        check "registered" "0 $ours" "$status $(readlink "$link")"
        FAIL_FOR="cimmofl .*/$step"
        offline
        check "$step fails behind a registration" "1 $ours" "$status $(readlink "$link")"
        check_contains "$step fails" "what $STATE/pegasus holds of the provider is as it was, or incomplete" "$output"
        check "$step fails: said of the server" "" "$(grep 'is not registered' <<<"$output" || true)"
    done
}

# With a stand-in for the loader's answer; packaging.install asks the loader itself.
test_a_library_that_cannot_be_loaded_from_its_place_is_told() {
    local server
    printf '#!/bin/sh\necho "libtavik.so.1 => not found"\necho "libc.so.6 => /lib/libc.so.6"\n' >"$scratch/tools/ldd"
    chmod 755 "$scratch/tools/ldd"
    for server in openpegasus sfcb; do
        fresh
        register register "$server"
        check "$server" "1 " "$status $(left_in "$server")"
        check_contains "$server" "does not find libtavik.so.1" "$output"
        check_contains "$server" "write $scratch/prefix/lib to a file in /etc/ld.so.conf.d" "$output"
    done
    rm "$scratch/tools/ldd"
}

test_another_library_of_that_name_is_left_alone
test_links_are_replaced_only_where_they_are_ours_or_lead_nowhere
test_several_folders_of_providers_are_looked_at_in_their_order
test_folders_that_begin_at_the_server_are_found
test_nothing_is_registered_that_the_server_would_not_find
test_a_failure_offline_undoes_what_this_run_did_and_no_more
test_a_library_that_cannot_be_loaded_from_its_place_is_told
conclude
