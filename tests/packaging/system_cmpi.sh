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

# Times are kept: what did not change is not newer than what was made of it.
package=$build_folder/system_cmpi/package
rm -rf "$package"
mkdir -p "$package/include" "$package/lib"
cp -rp "$source_folder/cmpi/include" "$package/include/cmpi"
cp -p "$build_folder/lib/libcmpi_impl.a" "$package/lib/libcmpiCppImpl.a"

configure() { # configure FOLDER OPTION...
    run cmake -G Ninja -S "$source_folder" -B "$1" -DMEROLT_CMPI=system -DMEROLT_TESTS=OFF \
        -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O0 "${@:2}"
}

configure "$scratch/without" -DMEROLT_CMPI_C_INCLUDE_DIR=MEROLT_CMPI_C_INCLUDE_DIR-NOTFOUND
check "without a package" 1 "$status"
check_contains "without a package" "Install a CMPI development package" "$output"

with=$build_folder/system_cmpi/with
configure "$with" -DCMAKE_PREFIX_PATH="$package"
check "configuring" 0 "$status"
run cmake --build "$with" --target Merolt_CNA_Provider
check "building" 0 "$status"
if [[ $status -ne 0 ]]; then printf '%s\n' "$output" | tail -40; fi
check "sources compiled against our own folder" 0 "$(grep -c "$source_folder/cmpi/include" "$with/build.ninja" || true)"
check "factories" 4 \
    "$(nm -D --defined-only "$with/lib/libMerolt_CNA_Provider.so" | grep -c ' T Merolt_CNA_Provider_Create_')"
DESTDIR=$scratch/root run cmake --install "$with" --prefix /usr --component provider
check "installing the provider alone" 0 "$status"
if [[ $status -ne 0 ]]; then printf '%s\n' "$output" | tail -5; fi
check "programs" merolt-cna-register "$(find "$scratch/root" -type f -path '*bin/*' -printf '%f\n' | xargs)"
for file in lib/cmpi/libMerolt_CNA_Provider.so lib/libtavik.so.1 share/merolt-cna-provider/mof/cimhost.registration \
    share/merolt-cna-provider/registration/merolt_cna_provider.reg share/man/man8/merolt-cna-register.8; do
    check "$file" yes "$([[ -s $scratch/root/usr/$file ]] && echo yes || echo no)"
done
conclude
