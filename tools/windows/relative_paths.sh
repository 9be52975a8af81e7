#!/usr/bin/env bash
# Runs a compiler or linker with relative paths instead of absolute ones, so its output does not
# depend on where the repository is:
#
#     relative_paths.sh BUILD_FOLDER SOURCE_FOLDER WAY_TO_SOURCES COMMAND...
#
# It runs in the build folder; WAY_TO_SOURCES is the path from there to the sources, such as ../../.
build=$1 sources=$2 way=$3
shift 3
command=("${@//"$build/"/}")
exec "${command[@]//"$sources/"/"$way"}"
