#!/usr/bin/env bash
# Builds the benchmarks and runs each beside its peers; the work of ./bench.
set -euo pipefail
cd "$(dirname "$0")/.."
# shellcheck source=tools/lib.sh
source tools/lib.sh

purposes=(build bench)
screen=()
if ! has_display; then
    purposes+=(screen)
    screen=(python3 -B tests/e2e/desktop.py)
fi
install_packages "${purposes[@]}" || exit 1
build_preset linux-bench

programs=()
for file in build/linux-bench/bench/bench_*; do
    [[ -f $file && -x $file ]] && programs+=("$file")
done
[[ ${#programs[@]} -gt 0 ]] || die "no benchmarks were built"
reports=build/linux-bench/reports
rm -rf "$reports"
mkdir -p "$reports"
for program in "${programs[@]}"; do
    say "${program##*/}"
    "${screen[@]}" "$program" --benchmark_out="$reports/${program##*/}.json" "$@"
done
tools/ratios.py "$reports"
