#!/usr/bin/env bash
# No include runs upwards in the layers: a file of src/ includes only its own folder and those that come before it in
# the table of folders in docs/architecture.md.
set -euo pipefail
root=$1

mapfile -t folders < <(sed -n 's#^| `src/\([a-z_]*\)/` .*#\1#p' "$root/docs/architecture.md")
declare -A place
for index in "${!folders[@]}"; do place[${folders[index]}]=$index; done

faults=0
fault() {
    printf '%s\n' "$*"
    faults=$((faults + 1))
}

for folder in "$root"/src/*/; do
    folder=$(basename "$folder")
    [[ -n ${place[$folder]:-} ]] || fault "src/$folder is missing in the table of folders"
done
for folder in "${folders[@]}"; do [[ -d $root/src/$folder ]] || fault "src/$folder is in the table, but not there"; done

includes=0
while IFS=: read -r file line text; do
    from=${file%%/*}
    to=${text#*\"}
    to=${to%%\"*}
    includes=$((includes + 1))
    # A header of cmpi/ has no folder, and the version belongs to all.
    [[ $to == */* ]] || continue
    to=${to%%/*}
    if [[ -z ${place[$to]:-} ]]; then
        fault "src/$file:$line includes $to/, which is no folder of src/"
    elif ((place[$to] > place[$from])); then
        fault "src/$file:$line includes $to/, which comes behind $from/ in the table"
    fi
done < <(cd "$root/src" && grep -rn '^ *# *include *"' --include='*.h' --include='*.cpp' . | sed 's#^\./##')

if ((includes < 100)); then fault "only $includes includes were found"; fi
((faults == 0)) || exit 1
echo "$includes includes, none upwards"
