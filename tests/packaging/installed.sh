# shellcheck shell=bash
# What a tree has to do wherever it was unpacked. Sourced behind checks.sh.

# serve PREFIX [OPTION...]: the cimhost of a tree, with its own fleet; its address ends up in `url`, which is empty if
# it did not start, and its process in `server`.
url='' server=''
serve() {
    mkdir -p "$scratch/run"
    printf '%s\n' ErrorLog=1 LinkStatusPollIntervalSeconds=0 >"$scratch/run/meroltcna.properties"
    : >"$scratch/output"
    (cd "$scratch/run" && exec "$1/bin/cimhost" --fleet "$1/share/merolt-cna-provider/fleets/demo.json" \
        serve --listen 127.0.0.1:0 --state "" "${@:2}") >"$scratch/output" 2>"$scratch/errors" &
    server=$!
    for _ in $(seq 300); do
        url=$(sed -n 's|.*listening on \(https*://[^, ]*\).*|\1|p' "$scratch/output")
        [[ -z $url ]] || return 0
        kill -0 "$server" 2>/dev/null || break
        sleep 0.1
    done
    cat "$scratch/errors"
}

stop_serving() {
    kill "$server"
    wait "$server" || true
}

# check_documents PREFIX: what the documents and pages refer to is installed.
check_documents() {
    local documents=$1/share/doc/merolt-cna-provider page link program file
    for page in "$documents"/docs/*.md; do
        while read -r link; do
            check "$link in ${page##*/}" yes "$([[ -e ${page%/*}/$link ]] && echo yes || echo no)"
        done < <(grep -oE '\]\([^)#]+' "$page" | sed 's/^](//' | grep -v '^https*:')
    done
    check "what only the sources have" "" "$(cd "$documents" && grep -rE '\./(demo|check)\>|tests/|tavik/host|README' . |
        grep -v 'In the sources' || true)"
    check "files that are named as if there were one prefix" "" \
        "$(cd "$1" && find "$documents" share/man -type f -exec zgrep -lE '/usr/share/(doc/)?merolt' {} + || true)"
    for program in bin/cimhost bin/tavik_host_dump sbin/merolt-cna-register share/merolt-cna-provider/record-host.sh; do
        check "$program" yes "$([[ -x $1/$program ]] && echo yes || echo no)"
    done
    for file in prometheus/merolt-cna.rules.yml grafana/merolt-cna.json; do
        check "$file" yes "$([[ -r $1/share/merolt-cna-provider/$file ]] && echo yes || echo no)"
    done
    check "manual pages" \
        "man1/cimhost.1 man1/tavik_host_dump.1 man5/meroltcna.properties.5 man8/merolt-cna-register.8" \
        "$(cd "$1/share/man" && find . -type f | sed 's|^\./||; s/\.gz$//' | sort | xargs)"
}

# check_unit TREE PREFIX: the service starts what is installed to that prefix.
check_unit() {
    check "unit" "ExecStart=$2/bin/cimhost serve --state /var/lib/merolt-cimhost/subscriptions \$CIMHOST_OPTIONS" \
        "$(grep ^ExecStart= "$1/lib/systemd/system/merolt-cimhost.service")"
    check "reload" "ExecReload=/bin/kill -HUP \$MAINPID" \
        "$(grep ^ExecReload= "$1/lib/systemd/system/merolt-cimhost.service")"
    # What is not made is not written to: the provider makes no folder for its log.
    check "the log's folder" "StateDirectory=merolt-cimhost merolt-cimhost/log" \
        "$(grep ^StateDirectory= "$1/lib/systemd/system/merolt-cimhost.service")"
}

# check_hardened FILE: the loader closes its tables before it runs, and it checks its stack.
check_hardened() {
    local what=${1##*/}
    check_contains "$what: all is bound at once" NOW "$(readelf -dW "$1" | grep FLAGS)"
    check_contains "$what: tables that are closed" GNU_RELRO "$(readelf -lW "$1")"
    check_contains "$what: loads anywhere" "DYN (" "$(readelf -hW "$1")"
    check_contains "$what: its stack" __stack_chk_fail "$(nm -D "$1")"
}

# check_installed ROOT: a tree with the prefix /usr answers out of its own files, for the fleet that came with it.
check_installed() {
    local usr=$1/usr library registration classes asked
    library=$(find "$usr" -name libMerolt_CNA_Provider.so)
    check "the folder of CMPI providers" cmpi "$(basename "$(dirname "$library")")"
    check "exported names" \
        "Merolt_CNA_Provider_Create_AssociationMI Merolt_CNA_Provider_Create_IndicationMI Merolt_CNA_Provider_Create_InstanceMI Merolt_CNA_Provider_Create_MethodMI" \
        "$(nm -D --defined-only "$library" | awk '$2 == "T" { print $3 }' | sort | xargs)"
    check "management library that is loaded" "$(readlink -f "$(dirname "$(dirname "$library")")/libtavik.so.1")" \
        "$(readlink -f "$(ldd "$library" | awk '$1 == "libtavik.so.1" { print $3 }')")"
    check "libraries that are not there" "" "$(ldd "$library" "$usr/bin/cimhost" | grep 'not found' || true)"
    # The loader knows the folders of this prefix by itself.
    check "folders that the library looks in" "\$ORIGIN/.." "$(folders_of "$library")"
    check_documents "$usr"
    check_unit "$usr" /usr
    case $(nm -D "$library") in
        *__asan_* | *__tsan_* | *__ubsan_*) ;; # Beside sanitizers, which check more, this would be of no use.
        *)
            check_hardened "$library"
            check_contains "copies of ${library##*/} that are checked" "snprintf_chk" "$(nm -D "$library")"
            check_hardened "$(dirname "$(dirname "$library")")/libtavik.so.1"
            check_hardened "$usr/bin/cimhost"
            ;;
    esac
    # What is served in two namespaces is asked for in both; what is told by indications cannot be asked for.
    registration=$usr/share/merolt-cna-provider/mof/cimhost.registration
    classes=$(grep -c '^[A-Za-z]' "$registration")
    asked=$((classes + $(grep -c '^[A-Za-z].*,' "$registration") - $(grep -c '^[A-Za-z].*: indication' "$registration")))
    check "registrations" "$classes $classes" \
        "$(grep -c '^instance of PG_ProviderCapabilities' "$usr"/share/merolt-cna-provider/registration/*.mof) $(grep -c '^\[' "$usr"/share/merolt-cna-provider/registration/*.reg)"

    serve "$usr"
    run "$usr/sbin/merolt-cna-register" check openpegasus --url "$url"
    check "every class answers" "0 $asked answer, 0 have nothing to show, 0 fail" "$status $(tail -n 1 <<<"$output")"
    stop_serving
    run "$usr/sbin/merolt-cna-register" check openpegasus --url "$url"
    check "a server that is gone" 1 "$status"
    check_contains "a server that is gone" "does not answer: Http Exception" "$output"
}
