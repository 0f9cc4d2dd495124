#!/usr/bin/env bash
# cmake --install into a scratch root, used from there.
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
conclude
