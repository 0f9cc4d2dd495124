# shellcheck shell=bash
# What the tests of this folder share: a scratch folder that goes away, checks and their count. Sourced.

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

failures=0
passed=0
check() { # check WHAT EXPECTED ACTUAL
    if [[ $2 == "$3" ]]; then
        passed=$((passed + 1))
    else
        failures=$((failures + 1))
        printf 'FAILED %s\n  expected: %s\n  actual:   %s\n' "$1" "$2" "$3"
    fi
}

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

finish() {
    printf '%d passed, %d failed\n' "$passed" "$failures"
    [[ $failures -eq 0 ]]
}
