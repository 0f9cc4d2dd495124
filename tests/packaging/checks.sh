# shellcheck shell=bash
# What the tests of this folder share: a scratch folder that goes away, and checks. Sourced.

# What the loader finds by itself is what the tests are about.
unset LD_LIBRARY_PATH

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

# leave_out WHAT REASON: says so, and lets a test that passes end as one that was skipped.
left_out=no
leave_out() {
    left_out=yes
    printf 'left out: %s: %s\n' "$1" "$2"
}

# The last line of a test that leaves checks out.
conclude_or_skip() {
    conclude || exit 1
    if [[ $left_out == yes ]]; then exit 77; fi
}

# folders_of LIBRARY: where it looks for others.
folders_of() { readelf -d "$1" | sed -n 's/.*R.*PATH.*\[\(.*\)\].*/\1/p'; }

# run COMMAND...: its status ends up in `status`, all that it prints in `output`.
run() {
    # shellcheck disable=SC2034
    status=0
    # shellcheck disable=SC2034
    output=$("$@" 2>&1) || status=$?
}
