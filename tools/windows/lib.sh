# shellcheck shell=bash
# Shared by the scripts of this folder, which source it after tools/lib.sh: where the cache is, and
# how a step fills one of its folders.
#
# A step makes its folder completely or not at all: it works in CACHE/work/STEP and renames the
# finished folder at the end, with the recipe's version in its file .recipe. An interrupted step
# goes on in its work folder; if the recipe has changed, the folder is made again.

repository=$PWD
cache=$(realpath -m "${ORVISTRAND_WINDOWS_CACHE:-$repository/build/windows-cache}")

# Folders that may have archives of finished folders.
archive_folders=("$cache" "$(realpath -m "$repository/../shared/windows")")

# megabytes_free: the free space on the cache's file system.
megabytes_free() {
    df -Pm "$cache" | awk 'NR == 2 { print $4 }'
}

# why_failed LOG: the most telling line of a log, or where the log is.
why_failed() {
    local reason
    if [[ $(megabytes_free) -lt 10 ]]; then
        reason="the disk of $cache is full"
    elif reason=$(grep -aEim1 'could not resolve|connection (failed|refused|timed out)|temporary failure' "$1"); then
        reason="no network? ${reason:0:160}"
    else
        reason=$(grep -aEim1 '(^| )(E|error|fatal error)( [^ ]+)?:' "$1" || tail -n 1 "$1")
        reason=${reason:0:200}
    fi
    printf '%s (all of it: %s)' "${reason:-it gave no reason}" "$1"
}

# logged COMMAND...: runs it with its output in the log of the step.
logged() {
    "$@" >>"$log" 2>&1
}

# is_ready STEP RECIPE: whether the folder of the step is there, by this recipe.
is_ready() {
    [[ $(cat "$cache/$1/.recipe" 2>/dev/null) == "$2" ]]
}

# run_step STEP RECIPE MEGABYTES WHAT: fills CACHE/STEP with the function make_STEP, which fills the
# folder $result, works in the folder $work and writes the log $log.
run_step() {
    local step=$1 recipe=$2 megabytes=$3 what=$4
    is_ready "$step" "$recipe" && return 0
    say "$what"
    local work="$cache/work/$step" log="$cache/work/$step.log" begin=$SECONDS
    mkdir -p "$cache" 2>/dev/null || die "cannot make the cache folder $cache"
    [[ $(megabytes_free) -ge $megabytes ]] ||
        die "$what: this needs $megabytes MB, and the disk of $cache has $(megabytes_free) MB left"
    if [[ $(cat "$work/.recipe" 2>/dev/null) != "$recipe" ]]; then
        rm -rf "$work"
        mkdir -p "$work" || die "cannot write to the cache folder $cache"
        printf '%s\n' "$recipe" >"$work/.recipe"
    fi
    : >"$log"
    local result="$work/result"
    rm -rf "$result"
    mkdir -p "$result"
    "make_$step" || die "$what: ${failure:-$(why_failed "$log")}"
    printf '%s\n' "$recipe" >"$result/.recipe" || die "$what: $(why_failed "$log")"
    rm -rf "${cache:?}/$step"
    mv "$result" "$cache/$step"
    rm -rf "$work" "$log"
    say "$what: done in $((SECONDS - begin)) s"
}

# fails WORDS...: sets the reason why a step failed, and fails.
fails() {
    failure="$*"
    return 1
}

# release_fact NAME: of /etc/os-release.
release_fact() {
    # shellcheck source=/dev/null
    (source /etc/os-release && echo "${!1:-}")
}

# The apt option that names the keys of the release's own repositories.
release_keys() {
    local keyring
    for keyring in /usr/share/keyrings/"$(release_fact ID)"-archive-keyring.{pgp,gpg}; do
        if [[ -e $keyring ]]; then
            echo " [signed-by=$keyring]"
            return
        fi
    done
}

# machine_repositories TYPE: apt source lines for the release's main suite, with the servers that
# the machine's apt uses; TYPE is deb or deb-src.
machine_repositories() {
    # shellcheck disable=SC2016
    apt-get indextargets --format '$(CREATED_BY)|$(REPO_URI)|$(RELEASE)|$(CODENAME)|$(COMPONENT)' |
        awk -F'|' -v start="$1$(release_keys)" -v codename="$(release_fact VERSION_CODENAME)" '
            $1 == "Packages" && ($3 == codename || $4 == codename) && !seen[$2 $5]++ {
                print start, $2, codename, $5
            }'
}

# fetch_source PACKAGE: unpacks the release's source package below $work and prints its folder. The
# machine's own package lists do not change.
fetch_source() {
    local package=$1 lists="$work/lists" sources="$work/sources.list"
    if [[ ! -e $work/$package.unpacked ]]; then
        mkdir -p "$lists/partial"
        machine_repositories deb-src >"$sources"
        [[ -s $sources ]] || fails "apt knows no repository of this release" || return 1
        local options=(-qq -o "Dir::Etc::SourceList=$sources"
            -o Dir::Etc::SourceParts=/dev/null -o "Dir::State::Lists=$lists"
            -o "APT::Sandbox::User=$(id -un)" -o Acquire::Retries=3)
        logged apt-get "${options[@]}" update --error-on=any || return 1
        rm -rf "${work:?}/$package"
        mkdir -p "$work/$package"
        (cd "$work/$package" && logged apt-get "${options[@]}" source "$package") || return 1
        touch "$work/$package.unpacked"
    fi
    find "$work/$package" -mindepth 1 -maxdepth 1 -type d
}

# cross_build SOURCE [OPTION...]: builds a CMake project for Windows and installs it in $result.
cross_build() {
    local source=$1
    shift
    local launcher=()
    command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    logged cmake -S "$source" -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O2 -gdwarf-4 -fno-omit-frame-pointer \
-ffile-prefix-map=$source/= -fdebug-prefix-map=$work/build=." \
        -DCMAKE_TOOLCHAIN_FILE="$repository/tools/windows/i686-w64-mingw32.cmake" \
        -DCMAKE_CXX_STANDARD=20 -DCMAKE_INSTALL_PREFIX="$cache/$step" "${launcher[@]}" "$@" &&
        logged cmake --build "$work/build" &&
        logged cmake --install "$work/build" --prefix "$result"
}
