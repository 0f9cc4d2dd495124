#!/usr/bin/env bash
# The library among the server's providers: which folder gets the link, whose link it is, and what becomes of it.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source_folder=$1
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
test_a_failure_offline_undoes_what_this_run_did_and_no_more
test_a_library_that_cannot_be_loaded_from_its_place_is_told
conclude
