#!/usr/bin/env bash
# The rules are understood by Prometheus, and each alerts in its case. Without promtool: 77.
# usage: rules.sh RULES CASES
set -euo pipefail

command -v promtool >/dev/null || exit 77
cases=$(mktemp)
trap 'rm -f "$cases"' EXIT
sed "s|RULES|$1|" "$2" >"$cases"
promtool check rules "$1"
promtool test rules "$cases"
