#!/usr/bin/env bash
# Makes the libraries' API pages from their headers, in build/docs. Fails if a public name has no
# comment.
set -euo pipefail
cd "$(dirname "$0")/.."
# shellcheck source=tools/lib.sh
source tools/lib.sh

install_packages docs || exit 1
rm -rf build/docs
mkdir -p build
doxygen tools/Doxyfile
say "The pages: build/docs/index.html"
