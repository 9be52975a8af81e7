# shellcheck shell=bash
# Steps for tools/windows/prepare.sh: a Wine that runs 32-bit programs, and the prefix that each
# test starts with a copy of.

wine_recipe=1

# CACHE/wine/entry tells tools/windows/wine how to start Wine:
#     host      the machine's own
#     bwrap     that of CACHE/wine/root, by bubblewrap
#     chroot    the same by mount namespace and chroot, which takes root's rights
make_wine() {
    if host_wine_works; then
        echo host >"$result/entry"
        return
    fi
    install_packages wine || fails "packages for Wine are missing" || return 1
    arch-test i386 >/dev/null 2>&1 ||
        fails "this machine's kernel runs no 32-bit (i386) programs" || return 1
    [[ -e $work/root.unpacked ]] || unpack_wine_root || return 1
    mv "$work/root" "$result/root"
    if ORVISTRAND_WINE_ENTRY=bwrap enters_root; then
        echo bwrap >"$result/entry"
    elif ORVISTRAND_WINE_ENTRY=chroot enters_root; then
        echo chroot >"$result/entry"
    else
        mv "$result/root" "$work/root"
        fails "neither bubblewrap nor chroot is allowed here: $(tail -n 1 "$log")"
    fi
}

# Wine works if a command in a 32-bit prefix returns its exit status.
host_wine_works() {
    command -v wine >/dev/null || return 1
    mkdir -p "$work/probe"
    local status=0
    WINEARCH=win32 WINEPREFIX="$work/probe" WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml=' \
        timeout 120 wine cmd /c 'exit 7' >>"$log" 2>&1 || status=$?
    WINEPREFIX="$work/probe" timeout 30 wineserver -k >>"$log" 2>&1 || true
    [[ $status == 7 ]]
}

# Unpacked as the user's own files, so that anyone can make it and remove it. Only from the
# release's main suite: its security suite may have other versions for i386 than for the machine's
# architecture, and then nothing could be installed.
unpack_wine_root() {
    local repositories
    repositories=$(machine_repositories deb)
    [[ -n $repositories ]] || fails "apt knows no repository of this release" || return 1
    rm -rf "$work/root"
    mkdir -p "$work/root"
    mmdebstrap --architectures=i386 --variant=apt --include=wine32,wine,fonts-dejavu-core \
        "$(release_fact VERSION_CODENAME)" - "$repositories" 2>>"$log" |
        tar -x --no-same-owner --exclude='./dev/*' -C "$work/root" 2>>"$log" || return 1
    touch "$work/root.unpacked"
}

enters_root() {
    ORVISTRAND_WINE_FOLDER=$result logged tools/windows/wine --version
}

# Without the debugger that starts on a crash: tests crash on purpose, and it takes seconds.
make_prefix() {
    export WINEPREFIX=$result/prefix
    mkdir -p "$WINEPREFIX"
    local home="$work/home"
    mkdir -p "$home"
    HOME=$home logged tools/windows/wine wineboot -i || return 1
    HOME=$home logged tools/windows/wine reg add \
        'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' \
        /v Debugger /d none /f || return 1
    HOME=$home logged tools/windows/wine --wait || return 1
    [[ -e $WINEPREFIX/drive_c/windows/system32/kernel32.dll ]] || fails "Wine made no prefix" ||
        return 1
    find "$WINEPREFIX/drive_c/windows" -type f -exec chmod a-w {} +
}
