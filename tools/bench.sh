#!/usr/bin/env bash
# Builds the benchmarks and runs each beside its peers; the work of ./bench.
set -euo pipefail
cd "$(dirname "$0")/.."
# shellcheck source=tools/lib.sh
source tools/lib.sh

usage() {
    cat <<'END'
./bench [--compare COMMIT] [--windows] [ARGUMENT...]

Prints what was measured beside its peers and its aims, and leaves a picture of that.
  --compare COMMIT  runs the benchmarks of this working tree also with the libraries and the
                    tool of that commit, in turns, and prints both figures and their ratio
  --windows         measures also the start of the Windows program under Wine
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

# The other commit, with the benchmarks of this one, in a working tree of its own.
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

# The Windows program beside the same bare dialog, in one prefix that is up already.
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
    else # in turns, so that both meet the same machine
        for round in 1 2 3; do
            run . "$now" 3 "$program" "$round" "$@"
            run "$tree" "$old" 3 "$program" "$round" "$@"
        done
    fi
done
[[ $windows == no ]] || measure_windows "$@"
tools/ratios.py "$now" ${before:+--before "$old"}
