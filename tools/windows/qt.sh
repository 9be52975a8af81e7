# shellcheck shell=bash
# Step for tools/windows/prepare.sh: Qt, from an archive or from the Debian release's source.

qt_recipe=1
qt_archive=qt-5.15.8-i686-w64-mingw32.tar.xz
qt_sha256=fdad0df8a997a3a26012ec24519492bdc6910bcd62478cb93b5f6556d4d0608e

# Only Core, Gui, Widgets, Test and the platforms windows, offscreen and minimal are used here. No
# tablet support, since the release's source lacks the wintab header.
qt_options=(
    -xplatform win32-g++ -device-option CROSS_COMPILE=i686-w64-mingw32-
    -opensource -confirm-license -release -shared -no-pch
    -nomake examples -nomake tests -nomake tools
    -no-opengl -no-dbus -no-openssl -no-icu -no-glib -no-sql-sqlite -no-sql-odbc
    -qt-zlib -qt-libpng -qt-libjpeg -qt-freetype -qt-harfbuzz -qt-pcre -qt-doubleconversion
    -no-feature-network -no-feature-sql -no-feature-xml -no-feature-concurrent
    -no-feature-printer -no-feature-tabletevent -no-feature-vulkan -no-feature-direct2d)

qt_archive_path() {
    local folder
    for folder in "${archive_folders[@]}"; do
        if [[ -e $folder/$qt_archive ]]; then
            echo "$folder/$qt_archive"
            return
        fi
    done
}

qt_title() {
    if [[ -n $(qt_archive_path) ]]; then
        echo "Unpacking Qt for Windows"
    else
        echo "Building Qt for Windows (about half an hour with two processors)"
    fi
}

qt_megabytes() {
    if [[ -n $(qt_archive_path) ]]; then echo 200; else echo 3000; fi
}

make_qt() {
    local archive
    archive=$(qt_archive_path)
    if [[ -n $archive ]]; then unpack_qt "$archive"; else build_qt; fi
}

unpack_qt() {
    [[ $(sha256sum <"$1") == "$qt_sha256  -" ]] ||
        fails "$1 is broken: its SHA-256 is not $qt_sha256" || return 1
    mkdir -p "$work/unpacked"
    logged tar -xJf "$1" -C "$work/unpacked" || return 1
    local settings
    settings=$(find "$work/unpacked" -path '*/lib/cmake/Qt5/Qt5Config.cmake' -print -quit)
    [[ -n $settings ]] || fails "$1 holds no Qt" || return 1
    rmdir "$result"
    mv "${settings%/lib/cmake/Qt5/Qt5Config.cmake}" "$result"
}

# The mkspec calls the compiler by its plain name, which may be the wrong thread variant if both are
# installed.
plain_compiler_names() {
    local tool
    mkdir -p "$work/bin"
    for tool in gcc g++; do
        ln -sf "$(command -v "i686-w64-mingw32-$tool-posix")" "$work/bin/i686-w64-mingw32-$tool"
    done
}

build_qt() {
    install_packages windows-qt || fails "packages for building Qt are missing" || return 1
    local source build="$work/qt-build"
    source=$(fetch_source qtbase-opensource-src) || return 1
    plain_compiler_names
    local PATH="$work/bin:$PATH"
    if [[ ! -e $build/.configured ]]; then
        rm -rf "$build"
        mkdir -p "$build"
        (cd "$build" && logged "$source/configure" -prefix "$cache/qt" "${qt_options[@]}") || return 1
        touch "$build/.configured"
    fi
    logged nice make -C "$build" -j"$(nproc)" &&
        logged make -C "$build" install INSTALL_ROOT="$work/installed" || return 1
    rmdir "$result"
    mv "$work/installed$cache/qt" "$result"
}
