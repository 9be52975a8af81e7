#!/usr/bin/env bash
# Builds the benchmarks and runs each together with its peers; ./bench calls it.
set -euo pipefail
cd "$(dirname "$0")/.."
# shellcheck source=tools/lib.sh
source tools/lib.sh

usage() {
    cat <<'END'
./bench [--compare COMMIT] [--windows] [ARGUMENT...]

Prints our figures beside the peers' and the aims, and draws a picture of them.
  --compare COMMIT  also runs this working tree's benchmarks with the libraries and the tool
                    of that commit, alternately, and prints both figures and their ratio
  --windows         also measures the start of the Windows program under Wine
Arguments go to every benchmark, such as --benchmark_filter=Parse.
END
}

before=
windows=no
while [[ $# -gt 0 ]]; do
    case $1 in
        --compare)
            before=$(git rev-parse --verify "${2:?--compare needs a commit}^{commit}")
            shift
            ;;
        --windows) windows=yes ;;
        -h | --help)
            usage
            exit 0
            ;;
        *) break ;;
    esac
    shift
done

purposes=(build bench)
screen=()
if [[ -z ${DISPLAY:-} ]]; then
    purposes+=(screen)
    screen=(python3 -B tools/desktop.py)
fi
install_packages "${purposes[@]}" || exit 1
build_preset linux-bench

# Builds the other commit, with this one's benchmarks, in a separate working tree.
tree=$PWD/build/compare
build_before() {
    git worktree prune
    if [[ -d $tree ]]; then
        git -C "$tree" checkout --quiet --force --detach "$before"
    else
        git worktree add --quiet --detach "$tree" "$before"
    fi
    rm -rf "$tree/benchmarks"
    cp -r benchmarks "$tree/"
    (cd "$tree" && build_preset linux-bench)
}

# run TREE REPORTS REPETITIONS PROGRAM ROUND ARGUMENT...: one program's report.
run() {
    local folder=$1 reports=$2 repetitions=$3 program=$4 round=$5
    shift 5
    "${screen[@]}" "$folder/build/linux-bench/bench/$program" \
        --benchmark_enable_random_interleaving=true --benchmark_repetitions="$repetitions" \
        --benchmark_display_aggregates_only=true --benchmark_min_time=0.1 \
        --benchmark_out="$reports/$program.$round.json" "$@"
}

# The Windows program beside the same bare dialog, in one prefix that is already running.
measure_windows() {
    tools/windows/prepare.sh
    cmake --preset win32 --log-level=NOTICE -DORVISTRAND_BUILD_BENCH=ON
    cmake --build --preset win32 --target orvistrand-configure bare_dialog orvistrand_runtime
    say "bench_startup, Windows programs"
    local WINEPREFIX programs=$PWD/build/win32/run
    WINEPREFIX=$(tools/windows/wine --new-prefix)
    export WINEPREFIX
    "${screen[@]}" env -u QT_QPA_PLATFORM build/linux-bench/bench/bench_startup \
        --wine "$PWD/tools/windows/wine" "$programs" \
        --benchmark_enable_random_interleaving=true \
        --benchmark_out="$PWD/$now/bench_startup.windows.json" "$@" || complain "no Wine figures"
    tools/windows/wine --remove-prefix
}

now=build/linux-bench/reports/now
old=build/linux-bench/reports/before
rm -rf "$now" "$old"
mkdir -p "$now" "$old"
[[ -z $before ]] || build_before
for file in build/linux-bench/bench/bench_*; do
    [[ -f $file && -x $file ]] || continue
    program=${file##*/}
    say "$program"
    if [[ -z $before ]]; then
        run . "$now" 9 "$program" 1 "$@"
    else # alternately, so that both see the same conditions
        for round in 1 2 3; do
            run . "$now" 3 "$program" "$round" "$@"
            run "$tree" "$old" 3 "$program" "$round" "$@"
        done
    fi
done
[[ $windows == no ]] || measure_windows "$@"
tools/ratios.py "$now" ${before:+--before "$old"}
