#!/usr/bin/env bash
# Writes the golden texts of associations that have none, from what the provider answers now. Read them before you commit
# them: they are what the tests take for right from then on.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

usage() {
    cat <<'END'
usage: write_golden.sh BUILD-FOLDER NAME...        write golden/NAME.txt; an association is named without Merolt_
       write_golden.sh BUILD-FOLDER --overwrite NAME...   the same where there is one already
END
}

if [[ ${1-} == -h || ${1-} == --help ]]; then
    usage
    exit 0
fi
[[ $# -ge 2 && -d ${1-} ]] || { usage >&2; exit 2; }
program=$1/bin/association_tests
shift
wish=write
if [[ $1 == --overwrite ]]; then
    wish=overwrite
    shift
fi
[[ $# -gt 0 ]] || { usage >&2; exit 2; }
[[ -x $program ]] || { printf 'write_golden.sh: build %s first\n' "$program" >&2; exit 1; }
for name in "$@"; do
    file=$here/golden/$name.txt
    if [[ $wish == write && -e $file ]]; then
        printf 'write_golden.sh: %s is there; --overwrite replaces it\n' "$file" >&2
        exit 1
    fi
    MEROLT_GOLDEN=$wish MEROLT_GOLDEN_NAME=$name "$program" \
        --gtest_filter="Of/AssociationGoldenTest.AnswersAndLogAreThoseOfTheText/$name" --gtest_brief=1 >/dev/null || true
    [[ -s $file ]] || { printf 'write_golden.sh: there is no association Merolt_%s\n' "$name" >&2; exit 1; }
    printf 'wrote %s\n' "$file"
done
