#!/usr/bin/env bash
# Judges layout, layers, code and scripts; part of ./test --lint. Needs preset linux built.
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

# Each script together with what it sources, which has no first line of its own.
check_scripts() {
    grep -rlE '^#!/usr/bin/env bash' run test bench package .ci/run tools | xargs shellcheck -x
}

judge "clang-format" check_layout
judge "layers" tools/layers.py
judge "clang-tidy" check_code
judge "shellcheck" check_scripts
