#!/usr/bin/env bash
# Makes configure.ico from configure.svg, beside it; only needed after the drawing has changed.
# Installs what it needs.
set -euo pipefail
cd "$(dirname "$0")/../.."
# shellcheck source=tools/lib.sh
source tools/lib.sh
install_packages icon || exit 1
cd configure/resources

pictures=()
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
for size in 16 24 32 48 64 256; do
    pictures+=("$scratch/$size.png")
    rsvg-convert --width "$size" --height "$size" configure.svg --output "${pictures[-1]}"
done
convert "${pictures[@]}" configure.ico
