# shellcheck shell=bash
# What ./demo and ./check share: messages, Debian packages, builds. Sourced; the caller has set `root`.
: "${root:?}"

say() { printf '%s\n' "$*"; }

fail() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# How many programs build or test at the same moment; JOBS in the environment says otherwise.
if [[ ! ${JOBS:-1} =~ ^[1-9][0-9]{0,3}$ ]]; then
    printf '%s: JOBS=%s: not a number of jobs from 1 to 9999\n' "${0##*/}" "$JOBS" >&2
    exit 2
fi
export CMAKE_BUILD_PARALLEL_LEVEL="${JOBS:-$(nproc)}"

# is_installed PACKAGE
is_installed() { [[ $(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null) == installed ]]; }

# as_root COMMAND...: as it is for root, else through sudo, which may ask for a password only where somebody can answer.
as_root() {
    if [[ $(id -u) -eq 0 ]]; then
        "$@"
    elif [[ -t 0 ]]; then
        sudo "$@"
    else
        sudo -n "$@"
    fi
}

# install_packages GROUP...: brings in what scripts/packages lists for the groups; does nothing where all is there.
install_packages() {
    local missing=() group package wanted
    while read -r group package; do
        for wanted in "$@"; do
            if [[ $group == "$wanted" ]] && ! is_installed "$package"; then missing+=("$package"); fi
        done
    done < <(grep -Ev '^[[:space:]]*(#|$)' "$root/scripts/packages")
    [[ ${#missing[@]} -gt 0 ]] || return 0

    command -v apt-get >/dev/null || fail "these Debian packages are missing, and there is no apt-get: ${missing[*]}"
    if [[ $(id -u) -ne 0 ]] && ! command -v sudo >/dev/null; then
        fail "these packages are missing, and only root can install them. As root: apt-get install ${missing[*]}"
    fi
    say "Installing ${missing[*]}"
    # An outdated package list still installs most things, so a failing update alone is no reason to stop.
    as_root apt-get -q update </dev/null || say "The package lists could not be updated; trying with those at hand."
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y --no-install-recommends -o DPkg::Lock::Timeout=300 \
        install "${missing[@]}" </dev/null || fail "installing failed. As root: apt-get install ${missing[*]}"
}

# install_without_service GROUP: the same for packages whose services are not wanted here. Where systemd runs, a service
# that is masked meanwhile is not started, and one that is disabled stays away when the machine starts again.
install_without_service() {
    local package packages=() units=()
    while read -r package; do
        is_installed "$package" || packages+=("$package")
    done < <(sed -nE "s/^$1[[:space:]]+//p" "$root/scripts/packages")
    [[ ${#packages[@]} -gt 0 ]] || return 0
    if [[ -d /run/systemd/system ]]; then units=("${packages[@]/%/.service}"); fi
    if [[ ${#units[@]} -gt 0 ]]; then as_root systemctl --runtime mask "${units[@]}"; fi
    install_packages "$1"
    if [[ ${#units[@]} -gt 0 ]]; then
        as_root systemctl --runtime unmask "${units[@]}"
        as_root systemctl disable "${units[@]}"
    fi
}

# configure PRESET [CMAKE-ARGUMENT...]: quiet unless something is wrong.
configure() {
    local preset=$1 log
    shift
    log=$(mktemp)
    if ! (cd "$root" && cmake --preset "$preset" "$@") >"$log" 2>&1; then
        cat "$log" >&2
        rm -f "$log"
        fail "configuring the preset $preset failed"
    fi
    rm -f "$log"
}

# build PRESET [TARGET...]: the whole preset, or only some of its targets. Goes on behind an error, to show all at once.
build() {
    local preset=$1
    shift
    (cd "$root" && cmake --build --preset "$preset" ${1:+--target "$@"} -- -k 0) ||
        fail "building the preset $preset failed"
}
