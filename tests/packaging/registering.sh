# shellcheck shell=bash
# merolt-cna-register as it was installed, and recording stand-ins for the tools of CIM servers. Sourced behind
# checks.sh; the caller has set `source_folder` and `mof_folder`.
: "${source_folder:?}" "${mof_folder:?}"

stand_in=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)/stand_in
export STATE=$scratch/state TMPDIR=$scratch/tmp
mkdir -p "$scratch"/{prefix/{sbin,lib/cmpi,share/merolt-cna-provider},tools,tmp,outside}
# This machine's own settings are none of the tests' business.
sed "s|^settings=.*|settings=$scratch/cim-provider.conf|" "$source_folder/scripts/merolt-cna-register" \
    >"$scratch/prefix/sbin/merolt-cna-register"
ln -s "$mof_folder" "$scratch/prefix/share/merolt-cna-provider/mof"
touch "$scratch/prefix/lib/cmpi/libMerolt_CNA_Provider.so"
for tool in cimmof cimmofl cimprovider cimcli cimconfig sfcbstage sfcbunstage sfcbrepos wbemcli; do
    ln -s "$stand_in" "$scratch/tools/$tool"
done

# known_as ADDRESS: what name resolution gives for the host's name; nothing if left out.
known_as() {
    printf '#!/bin/sh\necho "%s STREAM testhost"\n' "${1:-}" >"$scratch/tools/getent"
    if [[ -z ${1:-} ]]; then printf '#!/bin/sh\nexit 2\n' >"$scratch/tools/getent"; fi
}
printf '#!/bin/sh\necho testhost\n' >"$scratch/tools/uname"
known_as 192.0.2.10
chmod +x "$scratch/tools/"{getent,uname} "$scratch/prefix/sbin/merolt-cna-register"

forget_calls() {
    : >"$STATE/calls"
    echo 0 >"$STATE/count"
}

fresh() {
    rm -rf "$STATE"
    mkdir -p "$STATE/providers" "$STATE/stage" "$STATE/share"
    touch "$STATE/stage/default.reg" "$STATE/share/CIM_Schema.mof"
    forget_calls
    FAIL_AT=0 FAIL_FOR='' FAIL_TEXT=''
    SIGNAL_AT=0 SIGNAL='' SIGNAL_TO=''
    export FAIL_AT FAIL_FOR FAIL_TEXT SIGNAL_AT SIGNAL SIGNAL_TO
}

# As an administrator calls it, with the stand-ins as the installed server. In a session of its own: who interrupts it
# leaves the test alone.
register() {
    local options=(--tools "$scratch/tools")
    if [[ $2 == sfcb ]]; then options+=(--staging "$STATE/stage" --provider-folder "$STATE/providers"); fi
    run setsid --wait dash "$scratch/prefix/sbin/merolt-cna-register" "$@" "${options[@]}"
    check "temporary files left by $1 $2" "" "$(ls -A "$TMPDIR")"
}

calls_of() { grep -c "^$1 " "$STATE/calls" || true; }

is_registered() {
    if [[ $1 == openpegasus ]]; then [[ -e $STATE/module ]]; else [[ -e $STATE/stage/regs/merolt_cna_provider.reg ]]; fi
}

state_of() { if is_registered "$1"; then echo registered; else echo not registered; fi; }

# Whatever a registration brings: module, classes, staged files, links.
left_in() { # left_in SERVER
    if is_registered "$1"; then echo "the registration"; fi
    find "$STATE/providers" "$STATE/stage" "$STATE/classes" ! -type d ! -name default.reg 2>/dev/null || true
}

