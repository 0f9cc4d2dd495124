#!/usr/bin/env bash
# A client library meets the server: see management_client.py. Its subscription delivers to `cimhost listen`.
# usage: management_client.sh CIMHOST FLEET
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/end_to_end/server.sh
source "$here/server.sh" "$1" "$2" --anonymous-writes --state state.json

touch alerts listener_errors
"$cimhost" listen --port 0 --json >alerts 2>listener_errors &
listener=$!
listener_url=
for _ in $(seq 300); do
    listener_url=$(sed -n 's|.*listening for indications on \(http://[^, ]*\).*|\1|p' listener_errors)
    [[ -n $listener_url ]] && break
    sleep 0.1
done
check "the listener says where it listens" yes "$([[ -n $listener_url ]] && echo yes)"

# Takes a link down and waits until the listener has printed what it was told.
cat >happen <<END
"$cimhost" fleet set-link MC1020R4K00317 1 down --only storage "$fleet"
for _ in \$(seq 300); do
    [[ -s "$PWD/alerts" ]] && exit 0
    sleep 0.1
done
exit 1
END

status=0
python3 "$here/management_client.py" "http://$url" "$listener_url" bash "$PWD/happen" ||
    status=$?
check "every step of the client" 0 "$status"
check "the alert" MeroltCNA_AlertIndication_AdapterStatusChange "$(sed -n 's/^{"class":"\([^"]*\)".*/\1/p' alerts)"

finish
