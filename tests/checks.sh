# shellcheck shell=bash
# Checks and their count, for tests that are scripts. Sourced.

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

# Prints the count; its status is the test's.
conclude() {
    printf '%d passed, %d failed\n' "$passed" "$failures"
    [[ $failures -eq 0 ]]
}
