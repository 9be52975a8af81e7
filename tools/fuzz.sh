#!/usr/bin/env bash
# tools/fuzz.sh SECONDS [TARGET]...: runs these fuzz targets, or all, for that many seconds each;
# part of ./test --fuzz. Run alone, it first installs what it needs. Inputs that fail are kept in
# build/linux-fuzz/findings, one file each.
set -euo pipefail
cd "$(dirname "$0")/.."
# shellcheck source=tools/lib.sh
source tools/lib.sh

[[ ${1:-} =~ ^[1-9][0-9]*$ ]] || die "how many seconds for each target? tools/fuzz.sh SECONDS [TARGET]..."
seconds=$1
shift
if is_alone; then
    install_packages build fuzz || exit 1
fi
findings=build/linux-fuzz/findings/

# New inputs go to the build folder; those of the repository are only read.
fuzz_one() {
    local target=$1 name=${1##*/}
    local grown=build/linux-fuzz/corpus/$name given=fuzz/corpus/$name
    mkdir -p "$grown" "$findings"
    "$target" -max_total_time="$seconds" -timeout=10 -print_final_stats=1 \
        -artifact_prefix="$findings$name-" "$grown" "$given"
}

if ! build_preset linux-fuzz; then
    record failed "build of preset linux-fuzz"
    finish
    exit
fi
targets=("${@/#/build/linux-fuzz/fuzz/}")
if [[ $# == 0 ]]; then
    for file in build/linux-fuzz/fuzz/fuzz_*; do
        [[ -f $file && -x $file ]] && targets+=("$file")
    done
fi
if [[ ${#targets[@]} == 0 ]]; then
    record failed "fuzzing: no targets were built"
    finish
    exit
fi
for target in "${targets[@]}"; do
    judge "${target##*/} for $seconds s" fuzz_one "$target"
done
finish
