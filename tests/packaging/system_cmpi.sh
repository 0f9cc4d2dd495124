#!/usr/bin/env bash
# The provider builds against an installed CMPI package: our own headers and classes, put where such a package has them.
# What was compiled stays in the build tree, so that the next run compiles what has changed.
# usage: system_cmpi.sh SOURCES BUILD
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source_folder=$1
build_folder=$2
# shellcheck source=checks.sh
source "$here/checks.sh"

# package NAME: our own, as one. Times are kept: what did not change is not newer than what was made of it.
package() {
    rm -rf "$build_folder/system_cmpi/$1"
    mkdir -p "$build_folder/system_cmpi/$1"/{include,lib}
    cp -rp "$source_folder/cmpi/include" "$build_folder/system_cmpi/$1/include/cmpi"
    cp -p "$build_folder/lib/libcmpi_impl.a" "$build_folder/system_cmpi/$1/lib/libcmpiCppImpl.a"
}

# become_other HEADERS: the other package in use offers less.
become_other() {
    local header
    for header in "$1"/Cmpi*.h; do
        sed -E -i -f "$here/other_wrapper.sed" "$header"
        case ${header##*/} in
            CmpiData.h | CmpiArray.h) sed -E -i -f "$here/other_wrapper_values.sed" "$header" ;;
        esac
        touch -r "$source_folder/cmpi/include/${header##*/}" "$header"
    done
}

package package
package other
package=$build_folder/system_cmpi/package
other=$build_folder/system_cmpi/other
become_other "$other/include/cmpi"
check_variant() { # check_variant WHAT HEADERS OTHER_WRAPPER
    run "${CXX:-c++}" -std=c++20 -fsyntax-only -DOTHER_WRAPPER="$3" -isystem "$2" "$here/wrapper_variants.cpp"
    check "$1" "0 " "$status $output"
}
check_variant "what our headers offer" "$source_folder/cmpi/include" 0
check_variant "what the other headers offer" "$other/include/cmpi" 1

configure() { # configure FOLDER OPTION...
    run cmake -G Ninja -S "$source_folder" -B "$1" -DMEROLT_CMPI=system -DMEROLT_TESTS=OFF \
        -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0 \
        -DCMAKE_PROJECT_merolt_cna_provider_INCLUDE="$here/quick_provider.cmake" "${@:2}"
}

configure "$scratch/without" -DMEROLT_CMPI_C_INCLUDE_DIR=MEROLT_CMPI_C_INCLUDE_DIR-NOTFOUND
check "without a package" 1 "$status"
check_contains "without a package" "Install a CMPI development package" "$output"

build_with() { # build_with NAME PACKAGE
    configure "$build_folder/system_cmpi/$1" -DCMAKE_PREFIX_PATH="$2"
    check "$1: configuring" 0 "$status"
    run cmake --build "$build_folder/system_cmpi/$1" --target Merolt_CNA_Provider
    check "$1: building" 0 "$status"
    if [[ $status -ne 0 ]]; then printf '%s\n' "$output" | tail -40; fi
    check "$1: sources compiled against our own folder" 0 \
        "$(grep -c "$source_folder/cmpi/include" "$build_folder/system_cmpi/$1/build.ninja" || true)"
    check "$1: factories" 4 "$(nm -D --defined-only "$build_folder/system_cmpi/$1/lib/libMerolt_CNA_Provider.so" |
        grep -c ' T Merolt_CNA_Provider_Create_')"
}

cat >"$scratch/facts.json" <<'END'
{ "cards": [ { "serialNumber": "S1", "ports": [ { "ethernet": { "macAddress": "02:00:00:00:00:07", "facts": {
    "interfaceName": "ens1f0", "autoNegotiation": false, "linkSpeed": 100000000000,
    "supportedLinkSpeeds": [25000000000, 100000000000], "usedBy": ["bond0 (bond, active, up)", "vlan 7"] } } } ] } ] }
END

# Loaded, it answers: texts in arrays, associations, which read keys, and facts of each type.
ask() { # ask NAME FLEET QUESTION...
    run env TAVIK_SOURCE="fleet:$2" MEROLT_CNA_INSTALL_LOCATION="$scratch" \
        "$build_folder/bin/cimhost" --mof "$build_folder/share/merolt-cna-provider/mof" \
        --provider "$build_folder/system_cmpi/$1/lib/libMerolt_CNA_Provider.so" "${@:3}"
    check "$1: status of ${*:3}" 0 "$status"
    answers+=("$output")
}
ask_through() { # ask_through NAME
    ask "$1" "$source_folder/tavik/fleets/demo.json" enumerate Merolt_FCHBA_ObjectManager
    ask "$1" "$source_folder/tavik/fleets/demo.json" tree
    ask "$1" "$scratch/facts.json" enumerate Merolt_NIC_EthernetPort2 --json
}

with=$build_folder/system_cmpi/with
build_with with "$package"
build_with with_other "$other"
answers=()
ask_through with
ask_through with_other
check_contains "an object" "Pegasus CIM Server" "${answers[0]}"
check_contains "a tree" "storage port" "${answers[1]}"
for fact in '"InterfaceName":"ens1f0"' '"AutoNegotiation":false' '"LinkSpeed":100000000000' \
    '"SupportedLinkSpeeds":[25000000000,100000000000]' '"UsedBy":["bond0 (bond, active, up)","vlan 7"]'; do
    check_contains "facts" "$fact" "$(sed -e ':a; N; $!ba; s/\n *//g; s/": /":/g' <<<"${answers[2]}")"
done
check "the same object" "${answers[0]}" "${answers[3]}"
check "the same tree" "${answers[1]}" "${answers[4]}"
check "the same facts" "${answers[2]}" "${answers[5]}"
DESTDIR=$scratch/root run cmake --install "$with" --prefix /usr --component provider
check "installing the provider alone" 0 "$status"
if [[ $status -ne 0 ]]; then printf '%s\n' "$output" | tail -5; fi
check "programs" merolt-cna-register "$(find "$scratch/root" -type f -path '*bin/*' -printf '%f\n' | xargs)"
for file in lib/cmpi/libMerolt_CNA_Provider.so lib/libtavik.so.1 share/merolt-cna-provider/mof/cimhost.registration \
    share/merolt-cna-provider/registration/merolt_cna_provider.reg share/man/man8/merolt-cna-register.8; do
    check "$file" yes "$([[ -s $scratch/root/usr/$file ]] && echo yes || echo no)"
done
conclude
