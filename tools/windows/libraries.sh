# shellcheck shell=bash
# Steps for tools/windows/prepare.sh: the compiler's DLLs, Abseil and GoogleTest.

# The DLLs that compiled programs need, stripped: as packaged they are mostly symbols.
make_runtime() {
    local dll from
    for dll in libgcc_s_dw2-1.dll libstdc++-6.dll libwinpthread-1.dll; do
        from=$(i686-w64-mingw32-g++-posix -print-file-name="$dll")
        [[ $from == /* ]] || from=$(find /usr/i686-w64-mingw32/lib -name "$dll" -print -quit)
        [[ -e $from ]] || fails "the compiler has no $dll" || return 1
        logged i686-w64-mingw32-strip -o "$result/$dll" "$from" || return 1
    done
}

make_abseil() {
    local source
    source=$(fetch_source abseil) || return 1
    cross_build "$source" -DABSL_PROPAGATE_CXX_STD=ON -DBUILD_TESTING=OFF
}

make_googletest() {
    [[ -e /usr/src/googletest/CMakeLists.txt ]] || fails "package googletest is incomplete" || return 1
    cross_build /usr/src/googletest
}
