#!/usr/bin/env bash
# Runs a compiler or linker with relative paths in place of absolute ones, so that nothing of
# what it writes depends on where the repository lies:
#
#     relative_paths.sh BUILD_FOLDER SOURCE_FOLDER WAY_TO_SOURCES COMMAND...
#
# It is called in the build folder; the way from there to the sources is ../../ or the like.
build=$1 sources=$2 way=$3
shift 3
command=("${@//"$build/"/}")
exec "${command[@]//"$sources/"/"$way"}"
