#!/usr/bin/env bash
# ./demo and ./check say what is wrong with their words before they install or build anything.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=checks.sh
source "$here/checks.sh"
root=$1
cimhost=$2

for jobs in x 0 -1 1.5; do
    run env JOBS="$jobs" "$root/check" format
    check "JOBS=$jobs ./check" "2 check: JOBS=$jobs: not a number of jobs from 1 to 9999" "$status $output"
done
run env JOBS=x "$root/demo" --once
check "JOBS=x ./demo" "2 demo: JOBS=x: not a number of jobs from 1 to 9999" "$status $output"

# Somebody who listens, until the end of the test.
"$cimhost" listen --port 0 2>"$scratch/listener" &
trap 'kill %1; rm -rf "$scratch"' EXIT
for _ in {1..200}; do
    grep -q http "$scratch/listener" && break
    sleep 0.1
done
taken=$(sed -n 's|.*http://||p' "$scratch/listener")
run timeout 20 "$root/demo" --listen "$taken"
check "./demo on a port that is taken" 1 "$status"
check_contains "./demo on a port that is taken" "somebody else listens on $taken; --listen chooses another port" "$output"

conclude
