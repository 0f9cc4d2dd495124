#!/usr/bin/env bash
# Manual pages without a warning, scripts and unit as their checkers want them. What checker is missing is told: 77.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source_folder=$1
# shellcheck source=checks.sh
source "$here/checks.sh"

missing=()
available() {
    command -v "$1" >/dev/null && return
    missing+=("$1")
    return 1
}

if available groff; then
    for page in "$source_folder"/packaging/man/*.[158]; do
        check "warnings of ${page##*/}" "" "$(groff -man -Tutf8 -ww -z "$page" 2>&1)"
        check_contains "${page##*/}" "SYNOPSIS" "$(cat "$page")"
    done
    # Every option that the programs know is in their page.
    page=$(sed 's/\\-/-/g' "$source_folder/packaging/man/merolt-cna-register.8")
    while read -r option; do check_contains "merolt-cna-register.8" "$option" "$page"; done < <(
        "$source_folder/scripts/merolt-cna-register" --help | grep -o '^  --[a-z-]*')
    page=$(sed 's/\\-/-/g' "$source_folder/packaging/man/tavik_host_dump.1")
    while read -r option; do check_contains "tavik_host_dump.1" "$option" "$page"; done < <(
        "$3" --help | grep -o -- '--[a-z-]*')
    page=$(sed 's/\\-/-/g' "$source_folder/packaging/man/cimhost.1")
    while read -r word; do check_contains "cimhost.1" "$word" "$page"; done < <(
        for command in '' serve enumerate associators listen; do
            "$2" $command --help | grep -oE '^  (--[a-z-]+|[a-z]+ )'
        done | sort -u)
fi
if available shellcheck; then
    run shellcheck -x -P SCRIPTDIR "$source_folder/scripts/merolt-cna-register" \
        "$source_folder"/packaging/debian/{postinst,postrm,prerm} "$here/stand_in" \
        "$here"/{documents,install,package,register,register_library,scripts,system_cmpi}.sh
    check "shellcheck" "0 " "$status $output"
fi
if available systemd-analyze; then
    sed "s|@bin_folder@|/bin/true \&\& |; s|^ExecStart=.*|ExecStart=/bin/true|" \
        "$source_folder/packaging/systemd/merolt-cimhost.service.in" >"$scratch/merolt-cimhost.service"
    check "unit" "" "$(systemd-analyze verify --man=no "$scratch/merolt-cimhost.service" 2>&1 | grep merolt-cimhost || true)"
    run systemd-analyze security --offline=yes --threshold=30 --no-pager "$scratch/merolt-cimhost.service"
    check "exposure of the service, 3.0 at most" 0 "$status"
    if [[ $status -ne 0 ]]; then tail -3 <<<"$output"; fi
fi

conclude
if [[ ${#missing[@]} -gt 0 ]]; then
    printf 'not checked, as these are not installed: %s\n' "${missing[*]}"
    exit 77
fi
