# shellcheck shell=bash
# What the tests of this folder share: a scratch folder that goes away, and checks. Sourced.

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# shellcheck source=tests/checks.sh
source "$(dirname "${BASH_SOURCE[0]}")/../checks.sh"

check_contains() { # check_contains WHAT PART WHOLE
    if [[ $3 == *"$2"* ]]; then
        passed=$((passed + 1))
    else
        failures=$((failures + 1))
        printf 'FAILED %s\n  expected in it: %s\n  actual: %s\n' "$1" "$2" "$3"
    fi
}

# run COMMAND...: its status ends up in `status`, all that it prints in `output`.
run() {
    # shellcheck disable=SC2034
    status=0
    # shellcheck disable=SC2034
    output=$("$@" 2>&1) || status=$?
}
