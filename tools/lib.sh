# shellcheck shell=bash
# Shared by ./run, ./test, ./bench, ./package and the tools, which source it at the repository root.

say() { printf '==> %s\n' "$*"; }

complain() { printf '%s: %s\n' "${0##*/}" "$*" >&2; }

die() {
    complain "$@"
    exit 1
}

# packages_for PURPOSE...: the entries of tools/packages.txt under these purposes.
packages_for() {
    awk -v wanted=" $* " '
        /^\[/ { on = index(wanted, " " substr($0, 2, length($0) - 2) " "); next }
        on && NF && !/^#/ { print }' tools/packages.txt
}

is_installed() {
    dpkg-query -W -f='${db:Status-Status}\n' "$1" 2>/dev/null | grep -qx installed
}

# choose_package "a|b|c": the first name that this release has; if it has none, the first.
choose_package() {
    local name names
    IFS='|' read -ra names <<<"$1"
    for name in "${names[@]}"; do
        if apt-cache show "$name" >/dev/null 2>&1; then
            echo "$name"
            return
        fi
    done
    echo "${names[0]}"
}

# missing_packages PURPOSE...: prints the entries with no alternative installed.
missing_packages() {
    local entry name names
    while read -r entry; do
        IFS='|' read -ra names <<<"$entry"
        for name in "${names[@]}"; do
            is_installed "$name" && continue 2
        done
        echo "$entry"
    done < <(packages_for "$@")
}

as_root() {
    if [[ $(id -u) == 0 ]]; then
        "$@"
    else
        sudo "$@"
    fi
}

apt_get() {
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq -o Acquire::Retries=3 \
        -o DPkg::Lock::Timeout=300 -o Dpkg::Use-Pty=0 "$@"
}

# install_packages PURPOSE...: installs what tools/packages.txt lists for them and is missing.
# Complains and fails if it cannot; ORVISTRAND_INSTALL=no skips it.
install_packages() {
    [[ ${ORVISTRAND_INSTALL:-yes} == no ]] && return 0
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        complain "this is neither Debian nor Ubuntu, so nothing can be installed here. Install the" \
            "counterparts of what tools/packages.txt lists, then set ORVISTRAND_INSTALL=no."
        return 1
    fi
    local missing
    mapfile -t missing < <(missing_packages "$@")
    [[ ${#missing[@]} == 0 ]] && return 0

    if [[ $(id -u) != 0 ]]; then
        if ! command -v sudo >/dev/null || { ! [[ -t 0 ]] && ! sudo -n true 2>/dev/null; }; then
            complain "these packages are missing, and without sudo only root can install them:" \
                "apt-get install ${missing[*]%%|*}"
            return 1
        fi
        say "Installing missing packages; sudo may ask for your password"
    else
        say "Installing missing packages"
    fi
    printf '    %s\n' "${missing[*]//|/ or }"

    mkdir -p build
    local log=build/install.log entry chosen=()
    # If the package lists cannot be updated, the old ones may do.
    apt_get update >"$log" 2>&1 || true
    for entry in "${missing[@]}"; do
        chosen+=("$(choose_package "$entry")")
    done
    if ! apt_get install -y --no-install-recommends "${chosen[@]}" >>"$log" 2>&1; then
        tail -n 5 "$log" >&2
        complain "apt-get could not install these packages; is there a network? Its whole output is in $log"
        return 1
    fi
}

# build_preset NAME [TARGET...] [-- OPTION...]: configures build/NAME with the options and builds
# it.
build_preset() {
    local preset=$1 targets=()
    shift
    while [[ $# -gt 0 && $1 != -- ]]; do
        targets+=("$1")
        shift
    done
    say "Building preset $preset"
    cmake --preset "$preset" --log-level=NOTICE "${@:2}" &&
        cmake --build --preset "$preset" ${targets[0]:+--target "${targets[@]}"}
}

# Makes a locale with a decimal comma in the build folder, for a test; few machines have one.
# Programs started from this script find it.
provide_comma_locale() {
    export LOCPATH=$PWD/build/locale
    [[ -d $LOCPATH/de_DE.UTF-8 ]] && return 0
    mkdir -p "$LOCPATH"
    localedef -i de_DE -f UTF-8 "$LOCPATH/de_DE.UTF-8"
}

has_display() { [[ -n ${DISPLAY:-} || -n ${WAYLAND_DISPLAY:-} ]]; }

# Results that no test runner reports go to $RESULTS/steps.tsv: "passed<TAB>name". A script that
# runs alone, without RESULTS, reports failures in `finish`.
failures=()
record() {
    [[ $1 == passed ]] || failures+=("$2")
    [[ -z ${RESULTS:-} ]] || printf '%s\t%s\n' "$1" "$2" >>"$RESULTS/steps.tsv"
}

is_alone() { [[ -z ${RESULTS:-} ]]; }

# finish: the last call of a script that uses `record`; fails if it runs alone and anything failed.
finish() {
    if is_alone && [[ ${#failures[@]} != 0 ]]; then
        complain "failed: ${failures[*]}"
        return 1
    fi
}

# judge NAME COMMAND...: runs the command and records whether it succeeded.
judge() {
    local name=$1
    shift
    say "$name"
    if "$@"; then
        record passed "$name"
    else
        record failed "$name"
    fi
}
