#!/usr/bin/env bash
# The provider builds against an installed CMPI package: our own headers and classes, put where such a package has them.
# Compiles the whole provider once more, so it is no part of ctest: system_cmpi.sh SOURCES BUILD
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source_folder=$1
build_folder=$2
# shellcheck source=checks.sh
source "$here/checks.sh"

package=$scratch/package
mkdir -p "$package/include" "$package/lib"
cp -r "$source_folder/cmpi/include" "$package/include/cmpi"
cp "$build_folder/lib/libcmpi_impl.a" "$package/lib/libcmpiCppImpl.a"

configure() { # configure FOLDER OPTION...
    run cmake -G Ninja -S "$source_folder" -B "$scratch/$1" -DMEROLT_CMPI=system -DMEROLT_TESTS=OFF \
        -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O0 "${@:2}"
}

configure without -DMEROLT_CMPI_C_INCLUDE_DIR=MEROLT_CMPI_C_INCLUDE_DIR-NOTFOUND
check "without a package" 1 "$status"
check_contains "without a package" "Install a CMPI development package" "$output"

configure with -DCMAKE_PREFIX_PATH="$package"
check "configuring" 0 "$status"
run cmake --build "$scratch/with" --target Merolt_CNA_Provider
check "building" 0 "$status"
if [[ $status -ne 0 ]]; then printf '%s\n' "$output" | tail -40; fi
check "sources compiled against our own folder" 0 "$(grep -c "$source_folder/cmpi/include" "$scratch/with/build.ninja" || true)"
check "factories" 4 \
    "$(nm -D --defined-only "$scratch/with/lib/libMerolt_CNA_Provider.so" | grep -c ' T Merolt_CNA_Provider_Create_')"
finish
