# shellcheck shell=bash
# What a tree has to do wherever it was unpacked. Sourced behind checks.sh.

# check_installed ROOT: a tree with the prefix /usr answers out of its own files, for the fleet that came with it.
check_installed() {
    local usr=$1/usr library fleet registration classes asked
    library=$(find "$usr" -name libMerolt_CNA_Provider.so)
    fleet=$usr/share/merolt-cna-provider/fleets/demo.json
    check "the folder of CMPI providers" cmpi "$(basename "$(dirname "$library")")"
    check "exported names" \
        "Merolt_CNA_Provider_Create_AssociationMI Merolt_CNA_Provider_Create_IndicationMI Merolt_CNA_Provider_Create_InstanceMI Merolt_CNA_Provider_Create_MethodMI" \
        "$(nm -D --defined-only "$library" | awk '$2 == "T" { print $3 }' | sort | xargs)"
    check "management library that is loaded" "$(readlink -f "$(dirname "$(dirname "$library")")/libtavik.so.1")" \
        "$(readlink -f "$(ldd "$library" | awk '$1 == "libtavik.so.1" { print $3 }')")"
    check "libraries that are not there" "" "$(ldd "$library" "$usr/bin/cimhost" | grep 'not found' || true)"
    check "unit" "ExecStart=/usr/bin/cimhost serve --state /var/lib/merolt-cimhost/subscriptions \$CIMHOST_OPTIONS" \
        "$(grep ^ExecStart= "$usr/lib/systemd/system/merolt-cimhost.service")"
    # What is served in two namespaces is asked for in both; what is told by indications cannot be asked for.
    registration=$usr/share/merolt-cna-provider/mof/cimhost.registration
    classes=$(grep -c '^[A-Za-z]' "$registration")
    asked=$((classes + $(grep -c '^[A-Za-z].*,' "$registration") - $(grep -c '^[A-Za-z].*: indication' "$registration")))
    check "registrations" "$classes $classes" \
        "$(grep -c '^instance of PG_ProviderCapabilities' "$usr"/share/merolt-cna-provider/registration/*.mof) $(grep -c '^\[' "$usr"/share/merolt-cna-provider/registration/*.reg)"

    mkdir -p "$scratch/run"
    printf '%s\n' ErrorLog=1 LinkStatusPollIntervalSeconds=0 >"$scratch/run/meroltcna.properties"
    (cd "$scratch/run" && exec "$usr/bin/cimhost" --fleet "$fleet" serve --listen 127.0.0.1:0 --state "") \
        >"$scratch/output" 2>"$scratch/errors" &
    local server=$! url=''
    for _ in $(seq 300); do
        url=$(sed -n 's|.*listening on \(http://[^, ]*\).*|\1|p' "$scratch/output")
        [[ -z $url ]] || break
        kill -0 "$server" 2>/dev/null || break
        sleep 0.1
    done
    if [[ -z $url ]]; then cat "$scratch/errors"; fi
    run "$usr/sbin/merolt-cna-register" check openpegasus --url "$url"
    check "every class answers" "0 $asked answer, 0 have nothing to show, 0 fail" "$status $(tail -n 1 <<<"$output")"
    kill "$server"
    wait "$server" || true
    run "$usr/sbin/merolt-cna-register" check openpegasus --url "$url"
    check "a server that is gone" 1 "$status"
    check_contains "a server that is gone" "does not answer: Http Exception" "$output"
}
