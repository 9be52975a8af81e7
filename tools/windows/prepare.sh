#!/usr/bin/env bash
# Prepares everything for building and testing for Windows, in build/windows-cache or in the folder
# $ORVISTRAND_WINDOWS_CACHE; see docs/windows.md.
#
#     tools/windows/prepare.sh [build | wine]...    without a word: both
#
# Another call does only what is missing, and goes on where the last was interrupted.
set -euo pipefail
cd "$(dirname "$0")/../.."
# shellcheck source=tools/lib.sh
source tools/lib.sh
# shellcheck source=tools/windows/lib.sh
source tools/windows/lib.sh
# shellcheck source=tools/windows/libraries.sh
source tools/windows/libraries.sh
# shellcheck source=tools/windows/qt.sh
source tools/windows/qt.sh
# shellcheck source=tools/windows/wine.sh
source tools/windows/wine.sh

prepare_build() {
    install_packages windows || exit 1
    command -v i686-w64-mingw32-g++-posix >/dev/null ||
        die "the compiler i686-w64-mingw32-g++-posix is missing"
    local compiler
    compiler=$(i686-w64-mingw32-g++-posix -dumpfullversion)
    run_step runtime "1 $compiler" 100 "Collecting the compiler's runtime"
    run_step qt "$qt_recipe" "$(qt_megabytes)" "$(qt_title)"
    run_step abseil "3 $compiler" 500 "Building Abseil for Windows"
    run_step googletest "1 $compiler" 300 "Building GoogleTest for Windows"
}

prepare_wine() {
    run_step wine "$wine_recipe" 2500 "Preparing a 32-bit Wine"
    run_step prefix "1 $wine_recipe" 700 "Creating a Wine prefix"
}

parts=("$@")
[[ $# == 0 ]] && parts=(build wine)
for part in "${parts[@]}"; do
    [[ $part == build || $part == wine ]] || die "unknown part '$part'; there are build and wine"
done
mkdir -p "$cache" 2>/dev/null || die "cannot make the cache folder $cache"
exec {lock}>"$cache/.lock" || die "cannot write to the cache folder $cache"
flock -n "$lock" || {
    say "Waiting for another call that prepares $cache"
    flock "$lock"
}
# Prefixes left by programs that were killed.
find "$cache/scratch" -mindepth 1 -maxdepth 1 -mmin +1440 -exec rm -rf {} + 2>/dev/null || true
for part in "${parts[@]}"; do
    "prepare_$part"
done
