#!/usr/bin/env bash
# The Debian package: built, looked into, used, and as root installed into a scratch root and removed. The archive that
# cpack makes of the same files: looked into.
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
# The modes of what is packed are not those that this user gives to files.
(cd "$1" && umask 077 && cpack -G "DEB;TGZ" -B "$scratch/cpack") >"$scratch/cpack.log" 2>&1 || { cat "$scratch/cpack.log" && exit 1; }
package=$(ls "$scratch"/cpack/*.deb)
field() { dpkg-deb -f "$package" "$1"; }
check "name" merolt-cna-provider "$(field Package)"
check "file name" "merolt-cna-provider_$(field Version)_$(dpkg --print-architecture).deb" "$(basename "$package")"
check_contains "dependencies" "libexpat1" "$(field Depends)"
dpkg-deb -x "$package" "$scratch/root"
dpkg-deb -e "$package" "$scratch/control"
check_installed "$scratch/root"

check "files that not everybody can read" "" \
    "$(find "$scratch/root" "$scratch/control" -mindepth 1 ! -type l ! -perm -0444)"
check "folders that not everybody can enter" "" "$(find "$scratch/root" -mindepth 1 -type d ! -perm -0555)"
cp -r "$here/../../packaging/debian" "$scratch/debian"
chmod 600 "$scratch"/debian/*
mkdir -p "$scratch/closed/usr/share/man/man1"
touch "$scratch/closed/usr/share/man/man1/cimhost.1"
cmake -DCPACK_GENERATOR=DEB -DCPACK_TEMPORARY_INSTALL_DIRECTORY="$scratch/closed" -DCPACK_PACKAGING_INSTALL_PREFIX=/usr \
    -DCPACK_PACKAGE_NAME=merolt-cna-provider -DCPACK_MEROLT_DEBIAN_FOLDER="$scratch/debian" -P "$scratch/debian/documents.cmake" >/dev/null
check "documents of sources that are closed to others" "changelog.gz 644 copyright 644" \
    "$(cd "$scratch/closed/usr/share/doc/merolt-cna-provider" && stat -c '%n %a' -- * | xargs)"

check "recommendations" pci.ids "$(field Recommends)"
documents=$scratch/root/usr/share/doc/merolt-cna-provider
check "pages that are not compressed" "" "$(find "$scratch/root/usr/share/man" -type f ! -name '*.gz')"
check "a page" ".TH CIMHOST 1" "$(zcat "$scratch/root/usr/share/man/man1/cimhost.1.gz" | head -1 | cut -c 1-13)"
check "version in the changelog" "$(field Version)" "$(dpkg-parsechangelog -l "$documents/changelog.gz" -S Version)"
check "who is asked for a licence" "$(field Maintainer)." \
    "$(grep -o 'Merolt Corporation <[^>]*>\.' "$documents/copyright")"
check_contains "libraries for other packages" "libtavik 1 merolt-cna-provider" "$(cat "$scratch/control/shlibs")"
check_contains "triggers" "activate-noawait ldconfig" "$(cat "$scratch/control/triggers")"

check "what an administrator sets" "644 /etc/default/merolt-cimhost" \
    "$(stat -c %a "$scratch/root/etc/default/merolt-cimhost") $(cat "$scratch/control/conffiles")"
# shellcheck disable=SC2016
check "options of the service, none" "" \
    "$(env -i sh -c '. "$1" && echo "$CIMHOST_OPTIONS"' sh "$scratch/root/etc/default/merolt-cimhost")"

# The provider alone: what a CIM server and its administrator need, and no service to look after.
(cd "$1" && cpack --config CPackProviderConfig.cmake -G DEB -B "$scratch/only") >"$scratch/only.log" 2>&1 ||
    { cat "$scratch/only.log" && exit 1; }
only=$(ls "$scratch"/only/*.deb)
check "provider alone: name, and what it is not beside" "merolt-cna-provider-only merolt-cna-provider" \
    "$(dpkg-deb -f "$only" Package) $(dpkg-deb -f "$only" Conflicts)"
check "the whole is not beside it" merolt-cna-provider-only "$(field Conflicts)"
dpkg-deb -x "$only" "$scratch/only_root"
dpkg-deb -e "$only" "$scratch/only_control"
check "provider alone: programs" usr/sbin/merolt-cna-register \
    "$(cd "$scratch/only_root" && find . -path '*bin/*' -type f -printf '%P\n')"
check "provider alone: libraries" "libMerolt_CNA_Provider.so libtavik.so.1" \
    "$(find "$scratch/only_root" -name '*.so*' -type f -printf '%f\n' | sed 's/\.so\.1\..*/.so.1/' | sort | xargs)"
check "provider alone: settings of a service" "" "$(find "$scratch/only_root" -path '*etc*' -o -name '*.service')"
check "provider alone: scripts that look after a service" "" \
    "$(grep -rlE 'deb-systemd-helper|daemon-reload' "$scratch/only_control" || true)"
check_contains "provider alone: before its removal" "merolt-cna-register unregister" "$(cat "$scratch/only_control/prerm")"
check "provider alone: licence and changes" "changelog.gz copyright" \
    "$(find "$scratch/only_root/usr/share/doc/merolt-cna-provider-only" -type f -printf '%f\n' | sort | xargs)"
check "provider alone: files that the whole has not" "" \
    "$(cd "$scratch/only_root" && find . -type f ! -path '*/merolt-cna-provider-only/*' |
        while read -r file; do [[ -e $scratch/root/$file ]] || echo "$file"; done)"

# The archive has the same prefix, and nothing of the folder in which it was packed.
mkdir "$scratch/archive"
tar -xzf "$scratch"/cpack/*.tar.gz -C "$scratch/archive"
archived=$(dirname "$(find "$scratch/archive" -name usr)")
check "folders that the archive's library looks in" "\$ORIGIN/.." \
    "$(folders_of "$(find "$archived" -name libMerolt_CNA_Provider.so)")"
check_unit "$archived/usr" /usr
check "files of the archive that name the folder of packing" "" "$(grep -rlF "$scratch" "$archived" || true)"

check "the archive's folders that not everybody can enter" "" "$(tar -tvzf "$scratch"/cpack/*.tar.gz | grep '^d' |
    grep -v '^drwxr-xr-x' || true)"

# The maintainer scripts as dash runs them, on a machine with or without systemd, with recording programs in PATH. What
# unregisters fails and so does systemd, which nothing may hang on.
mkdir "$scratch/path" "$scratch/scripts" "$scratch/systemd"
for program in merolt-cna-register systemctl deb-systemd-invoke deb-systemd-helper; do
    printf '#!/bin/sh\necho %s "$@" >>%s/calls\nexit 1\n' "$program" "$scratch" >"$scratch/path/$program"
    chmod 755 "$scratch/path/$program"
done
check_script() { # check_script WHAT EXPECTED-CALLS [SETTING...] SCRIPT ARGUMENT...
    local what=$1 calls=$2 settings=()
    shift 2
    while [[ $1 == *=* ]]; do settings+=("$1") && shift; done
    sed "s|/run/systemd/system|$running|g" "$scratch/control/$1" >"$scratch/scripts/$1"
    : >"$scratch/calls"
    run env "${settings[@]}" PATH="$scratch/path:$PATH" dash "$scratch/scripts/$1" "${@:2}"
    check "$what" "0 $calls" "$status $(paste -sd '|' "$scratch/calls")"
}
unit=merolt-cimhost.service
unregister='--if-registered --maintainer-script'
unregistrations="merolt-cna-register unregister openpegasus $unregister|merolt-cna-register unregister sfcb $unregister"
known="deb-systemd-helper update-state $unit"
reload='systemctl --system daemon-reload'
running=$scratch/systemd
check_script "installing" "$known|$reload" postinst configure ""
check_script "before an upgrade" "" prerm upgrade 2.0
check_script "the old one's end at an upgrade" "" postrm upgrade 2.0
check_script "upgrading" "$known|$reload|deb-systemd-invoke try-restart $unit" postinst configure 1.0
check_script "an upgrade that did not come about" "$known|$reload|deb-systemd-invoke try-restart $unit" \
    postinst abort-upgrade 2.0
check_script "a removal that did not come about" "$known|$reload|deb-systemd-invoke start $unit" postinst abort-remove
check_script "nor one for another package" "$known|$reload|deb-systemd-invoke start $unit" \
    postinst abort-remove in-favour other 1.0
check_script "before removal" "deb-systemd-invoke stop $unit|$unregistrations" prerm remove
check_script "removal" "$reload" postrm remove
check_script "purging" "deb-systemd-helper purge $unit|$reload" postrm purge
check_script "installing in another root" "$known" DPKG_ROOT="$scratch" postinst configure 1.0
check_script "before removal from another root" "" DPKG_ROOT="$scratch" prerm remove
check_script "removal from another root" "" DPKG_ROOT="$scratch" postrm remove
running=$scratch/nowhere
check_script "upgrading without systemd" "$known" postinst configure 1.0
check_script "before removal without systemd" "$unregistrations" prerm remove
check_script "removal without systemd" "" postrm remove

if [[ $(id -u) -ne 0 ]]; then
    leave_out "installing into a scratch root" "not root"
    conclude_or_skip
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
wants=$scratch/system/etc/systemd/system/multi-user.target.wants
mkdir -p "$wants"
ln -s /lib/systemd/system/merolt-cimhost.service "$wants/"
in_scratch_root -i "$package"
check "installing again" 0 "$status"
check "the service, enabled by the administrator" merolt-cimhost.service "$(ls "$wants")"
echo 'CIMHOST_OPTIONS="--listen 127.0.0.1:1"' >"$scratch/system/etc/default/merolt-cimhost"
in_scratch_root --force-confold -i "$package"
check_contains "settings after an upgrade" "127.0.0.1:1" "$(cat "$scratch/system/etc/default/merolt-cimhost")"
in_scratch_root -r merolt-cna-provider
check "removing" 0 "$status"
check "settings after a removal" yes "$([[ -e $scratch/system/etc/default/merolt-cimhost ]] && echo yes)"
in_scratch_root --purge merolt-cna-provider
check "purging" 0 "$status"
# Without its helper, the package knows nothing of what the administrator enabled.
if command -v deb-systemd-helper >/dev/null; then
    check "files left" "" "$(find "$scratch/system" -path "$scratch/system/var" -prune -o ! -type d -print)"
else
    leave_out "files left" "deb-systemd-helper is not installed"
fi
conclude_or_skip
