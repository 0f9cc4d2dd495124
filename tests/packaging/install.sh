#!/usr/bin/env bash
# cmake --install into a scratch root and to a scratch prefix, used from there.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=checks.sh
source "$here/checks.sh"
# shellcheck source=installed.sh
source "$here/installed.sh"

DESTDIR=$scratch/root cmake --install "$1" --prefix /usr >/dev/null
check_installed "$scratch/root"
check "files outside the prefix" usr "$(ls "$scratch/root")"

# Both readers of the settings take every token of a comment that begins with a key for the key.
properties=$scratch/root/usr/share/doc/merolt-cna-provider/examples/meroltcna.properties
check "keys within comments" "" \
    "$(grep '^#' "$properties" | grep -Ei '(^|[[:space:]])(ErrorLog|DebugLog|LinkStatusPollIntervalSeconds|InteropNamespace)' || true)"
check "lines too long for a reader" "" "$(grep -E '^.{255}' "$properties" || true)"
check "settings" 7 "$(grep -c '^[A-Za-z]*=' "$properties")"

# A prefix that the loader does not know, and a server that reaches the library through a link of its own folder.
prefix=$scratch/prefix
link=$scratch/providers/libMerolt_CNA_Provider.so
cmake --install "$1" --prefix "$prefix" >/dev/null
mkdir "$scratch/providers" "$scratch/tools" "$scratch/state"
ln -s "$(find "$prefix" -name libMerolt_CNA_Provider.so)" "$link"
ask_through_link() { # ask_through_link PREFIX
    run env TAVIK_SOURCE="fleet:$1/share/merolt-cna-provider/fleets/demo.json" "$1/bin/cimhost" --provider "$link" \
        names Merolt_FCHBA_Namespace
}
ask_through_link "$prefix"
check "through a link" 0 "$status"
check_contains "through a link" "Merolt_FCHBA_Namespace." "$output"

# Elsewhere than where it was installed, the library works from its own folder, and its link is not registered.
mv "$prefix" "$scratch/elsewhere"
for tool in sfcbstage sfcbunstage sfcbrepos; do ln -s "$here/stand_in" "$scratch/tools/$tool"; done
mkdir "$scratch/state/stage" "$scratch/state/share"
touch "$scratch/state/stage/default.reg" "$scratch/state/share/CIM_Schema.mof" # what an installed sfcb has
register() {
    : >"$scratch/state/calls"
    echo 0 >"$scratch/state/count"
    run env STATE="$scratch/state" "$scratch/elsewhere/sbin/merolt-cna-register" register sfcb \
        --tools "$scratch/tools" --staging "$scratch/state/stage" "$@"
}
if PATH=$PATH:/usr/sbin:/sbin ldconfig -p | grep -q 'libtavik\.so\.1'; then
    leave_out "a link through which the loader finds too little" "this machine has a libtavik.so.1 that its loader knows"
else
    register --provider-folder "$scratch/providers"
    check "a link through which the loader finds too little" "1 " "$status $(ls "$scratch/providers")"
    check_contains "a link through which the loader finds too little" "the loader does not find libtavik.so.1" "$output"
fi
register --provider-folder "$(dirname "$(find "$scratch/elsewhere" -name libMerolt_CNA_Provider.so)")"
check "the library's own folder" 0 "$status"

# A server whose certificate nobody signed. One class is enough to ask it for.
mkdir "$scratch/one"
cp "$scratch/elsewhere/share/merolt-cna-provider/mof/merolt_server.mof" "$scratch/one/"
echo 'Merolt_FCHBA_Namespace: instance' >"$scratch/one/cimhost.registration"
openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -subj /CN=localhost \
    -addext subjectAltName=IP:127.0.0.1 -keyout "$scratch/key.pem" -out "$scratch/certificate.pem" 2>/dev/null
serve "$scratch/elsewhere" --certificate "$scratch/certificate.pem" --key "$scratch/key.pem"
ask_server() {
    run "$scratch/elsewhere/sbin/merolt-cna-register" check openpegasus --data "$scratch/one" --url "$url" "$@"
}
check_contains "address" "https://127.0.0.1:" "$url"
ask_server
check "a certificate that is not known" 1 "$status"
check_contains "a certificate that is not known" "does not answer: Http Exception" "$output"
ask_server --cacert "$scratch/certificate.pem"
check "a certificate that is known" 0 "$status"
check_contains "a certificate that is known" "1 answer, 0 have nothing to show, 0 fail" "$output"
ask_server --no-verify
check "any certificate" 0 "$status"
stop_serving

# Of all folders of libraries, the loader knows these and none that merely begins like one of them.
for prefix in /usr/libexec/merolt /library /usr /; do
    rm -rf "$scratch/root"
    DESTDIR=$scratch/root cmake --install "$1" --prefix "$prefix" --component provider >/dev/null
    library=$(find "$scratch/root" -name libMerolt_CNA_Provider.so)
    libraries=${library%/cmpi/*} expected="\$ORIGIN/.."
    case $prefix in
        /usr | /) ;;
        *) expected+=:${libraries#"$scratch/root"} ;;
    esac
    check "folders that a library in $prefix looks in" "$expected" "$(folders_of "$library")"
done

# A prefix that is told from where one stands.
(cd "$scratch" && cmake --install "$1" --prefix relative >/dev/null)
library=$(find "$scratch/relative" -name libMerolt_CNA_Provider.so)
check "folders that a library looks in" "\$ORIGIN/..:${library%/cmpi/*}" "$(folders_of "$library")"
check_unit "$scratch/relative" "$scratch/relative"

# Removed again as the documents say.
prefix="$scratch/a prefix"
cmake --install "$1" --prefix "$prefix" >/dev/null
cp "$1/install_manifest.txt" "$scratch/manifest"
documented=$(grep -o "tr .* | xargs -0 [^\`]*" "$here/../../docs/install.md")
run bash -c "${documented/<*.txt/<\"$scratch/manifest\"}"
check "what is left behind a removal" "0 " "$status $(find "$prefix" ! -type d)"
conclude_or_skip
