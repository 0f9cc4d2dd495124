#!/usr/bin/env bash
# The Debian package: built, looked into, used, and as root installed into a scratch root and removed.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=checks.sh
source "$here/checks.sh"
# shellcheck source=installed.sh
source "$here/installed.sh"

if ! command -v dpkg-shlibdeps >/dev/null; then
    printf 'dpkg-dev is not installed: no package was built\n'
    exit 77
fi
(cd "$1" && cpack -G DEB -B "$scratch/cpack") >"$scratch/cpack.log" 2>&1 || { cat "$scratch/cpack.log" && exit 1; }
package=$(ls "$scratch"/cpack/*.deb)
field() { dpkg-deb -f "$package" "$1"; }
check "name" merolt-cna-provider "$(field Package)"
check "file name" "merolt-cna-provider_$(field Version)_$(dpkg --print-architecture).deb" "$(basename "$package")"
check_contains "dependencies" "libexpat1" "$(field Depends)"
dpkg-deb -x "$package" "$scratch/root"
dpkg-deb -e "$package" "$scratch/control"
check_installed "$scratch/root"

# The script before removal, with a register script of its own in PATH that always fails.
mkdir "$scratch/path"
printf '#!/bin/sh\necho "$@" >>%s/calls\nexit 1\n' "$scratch" >"$scratch/path/merolt-cna-register"
chmod 755 "$scratch/path/merolt-cna-register"
before_removal() { run env PATH="$scratch/path:$PATH" "${@:2}" dash "$scratch/control/prerm" "$1"; }
touch "$scratch/calls"
before_removal upgrade
before_removal remove DPKG_ROOT="$scratch"
check "calls at an upgrade, and for another root" "" "$(cat "$scratch/calls")"
before_removal remove
check "removal" 0 "$status"
check "calls at a removal" \
    "unregister openpegasus --if-registered --maintainer-script unregister sfcb --if-registered --maintainer-script" \
    "$(xargs <"$scratch/calls")"

if [[ $(id -u) -ne 0 ]]; then
    conclude
    printf 'not root: the package was not installed into a scratch root\n'
    exit 77
fi

mkdir -p "$scratch"/system/var/lib/dpkg/{updates,info,triggers}
touch "$scratch"/system/var/lib/dpkg/{status,available}
in_scratch_root() {
    run dpkg --root="$scratch/system" --log=/dev/null --force-script-chrootless --force-depends "$@"
}
in_scratch_root -i "$package"
check "installing" 0 "$status"
check "status" "install ok installed" \
    "$(dpkg-query --admindir="$scratch/system/var/lib/dpkg" -W -f '${Status}' merolt-cna-provider)"
check "files as in the package" "" "$(diff -rq "$scratch/root" "$scratch/system" | grep -v '^Only in .*system: var$' || true)"
in_scratch_root -i "$package"
check "installing again" 0 "$status"
in_scratch_root --purge merolt-cna-provider
check "removing" 0 "$status"
check "files left" "" "$(find "$scratch/system" -path "$scratch/system/var" -prune -o ! -type d -print)"
conclude
