#!/usr/bin/env bash
# tools/lint.sh [layout | layers | pages | code | scripts]...: runs these checks, or all. Part of
# ./test --lint; run alone, it first installs what it needs, and builds preset linux for `code`.
set -euo pipefail
cd "$(dirname "$0")/.."
# shellcheck source=tools/lib.sh
source tools/lib.sh

folders=()
for folder in benchmarks collect configure examples fuzz libs tests; do
    [[ -d $folder ]] && folders+=("$folder")
done

check_layout() {
    find "${folders[@]}" \( -name '*.h' -o -name '*.cpp' \) -print0 |
        xargs -0 clang-format-14 --dry-run -Werror
}

# The sources of the preset, without what Qt's tools generated.
compiled_sources() {
    python3 - <<'END'
import json, os
here = os.getcwd() + os.sep
with open("build/linux/compile_commands.json", encoding="utf-8") as commands:
    files = {entry["file"] for entry in json.load(commands)}
for file in sorted(files):
    if file.startswith(here) and not file.startswith(here + "build" + os.sep):
        print(os.path.relpath(file))
END
}

check_code() {
    compiled_sources | xargs -P "$(nproc)" -n 1 clang-tidy-14 -p build/linux --quiet
}

# Each script together with the files it sources, which have no #! line.
check_scripts() {
    grep -rlE '^#!/usr/bin/env bash' run test bench package .ci/run tools | xargs shellcheck -x
}

checks=("$@")
[[ $# -gt 0 ]] || checks=(layout layers pages code scripts)
if is_alone; then
    install_packages build test lint docs || exit 1
fi
for check in "${checks[@]}"; do
    case $check in
        layout) judge "clang-format" check_layout ;;
        layers) judge "layers" tools/layers.py ;;
        pages) judge "doxygen" tools/docs.sh ;;
        code)
            if is_alone; then build_preset linux || die "preset linux cannot be built"; fi
            judge "clang-tidy" check_code
            ;;
        scripts) judge "shellcheck" check_scripts ;;
        *) die "there is no check '$check': layout, layers, pages, code, scripts" ;;
    esac
done
finish
