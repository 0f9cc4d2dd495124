# What the tests with wbemcli share: a server on a copy of the demonstration fleet, and checks. Sourced with CIMHOST and
# FLEET as arguments; sets `url`, `namespace`, and `fleet`, the copy. The working folder is the test's own from then on.
# A `listener` that the test starts is ended with the server.

# shellcheck source=tests/checks.sh
source "$(dirname "${BASH_SOURCE[0]}")/../checks.sh"

cimhost=$1

folder=$(mktemp -d)
fleet=$folder/fleet.json
cp "$2" "$fleet"
cd "$folder"
printf '%s\n' ErrorLog=1 LinkStatusPollIntervalSeconds=0 >meroltcna.properties
touch output errors
"$cimhost" serve --fleet "$fleet" --listen 127.0.0.1:0 "${@:3}" >output 2>errors &
server=$!
listener=
stop() {
    if [[ -n $listener ]]; then kill "$listener" 2>/dev/null || true; fi
    kill "$server" 2>/dev/null || true
    rm -rf "$folder"
}
trap stop EXIT

url=
for _ in $(seq 300); do
    url=$(sed -n 's|.*listening on http://\([^, ]*\).*|\1|p' output)
    [[ -n $url ]] && break
    kill -0 "$server" 2>/dev/null || { cat errors; exit 1; }
    sleep 0.1
done
[[ -n $url ]] || { printf 'the server did not say where it listens\n'; exit 1; }
namespace=$url/root/merolt_cmpi

# The number in brackets of a CIM error that wbemcli prints.
error_of() { "$@" 2>&1 | sed -n 's/.*Cim: (\([0-9]*\)).*/\1/p' | head -1; }

# The path of the first instance. Without a pipe: a reader that has seen enough would end wbemcli, and the test with it.
first_name() { # first_name PLACE:CLASS
    wbemcli ein "http://$1" >enumerated_names
    head -1 enumerated_names
}

# How many paths stand at the beginning of a line.
paths_in() { grep -c "^$url/" "$1" || true; }

# Ends the server as an operator does, and the test with the count.
finish() {
    kill -TERM "$server"
    local status=0
    wait "$server" || status=$?
    check "the server's status after SIGTERM" 0 "$status"
    conclude
}
