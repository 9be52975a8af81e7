#!/usr/bin/env bash
# Installs the Debian package in namespaces that only this process sees, starts the tool by its menu
# entry, and removes the package again; prints results for the trial to check.
#
#     on_a_machine.sh SCRATCH PACKAGE     as root of a mount and process namespace
set -euo pipefail
scratch=$1 package=$2
settings=/var/lib/Quorvane/Orvistrand work=/var/lib/orvistrand-configure

mount -t tmpfs tmpfs "$scratch"
for folder in usr var etc; do
    mkdir -p "$scratch/$folder"/{upper,work}
    mount -t overlay overlay "/$folder" \
        -o "lowerdir=/$folder,upperdir=$scratch/$folder/upper,workdir=$scratch/$folder/work"
done

# judge WORD COMMAND...: prints "WORD yes" or "WORD no".
judge() {
    local word=$1
    shift
    if "$@" >/dev/null 2>&1; then echo "$word yes"; else echo "$word no"; fi
}
as() { setpriv --reuid "$1" --regid "$1" --groups "$2" "${@:3}"; }

dpkg --no-triggers --install "$package" </dev/null >&2
stat --format '%n %a %U:%G' "$settings" "$work"/{dumps,files,files/dumps.log}
stat --format '%n %a %U:%G' /usr/bin/orvistrand-collect
judge collector-is-sound systemd-analyze verify --man=no /usr/lib/systemd/system/orvistrand-collect.service
judge collector-is-on test -e /etc/systemd/system/multi-user.target.wants/orvistrand-collect.service
judge collector-has-a-user test "$(id -gn orvistrand-collect)" = orvistrand
judge member-stores as 60001 orvistrand touch "$settings/new"
judge stranger-stores as 60002 60002 touch "$settings/new2"
judge user-adds as 60001 60001 sh -c "umask 077; echo text >$work/dumps/first"
judge other-lists as 60002 60002 ls "$work/dumps"
judge other-reads as 60002 60002 cat "$work/dumps/first"
judge other-replaces as 60002 60002 sh -c "mv -f /etc/hostname $work/dumps/first || rm -f $work/dumps/first"
judge other-logs as 60002 60002 sh -c "echo line >>$work/files/dumps.log"
judge other-reads-log as 60002 60002 cat "$work/files/dumps.log"

printf '[NVR]\nAddress 10.0.0.1\nPort 80\n' >"$settings/Settings"
gio launch /usr/share/applications/orvistrand-configure.desktop >&2
until pid=$(pgrep -x orvistrand-conf); do sleep 0.1; done
echo "works-in $(readlink "/proc/$pid/cwd")"
while [[ -d /proc/$pid ]]; do sleep 0.1; done
echo "stored $(tr '\n' '|' <"$settings/Settings")"

dpkg --no-triggers --remove orvistrand-configure </dev/null >&2
judge settings-stay-removed test -e "$settings/Settings"
judge evidence-stays-removed test -e "$work/dumps/first"
dpkg --no-triggers --purge orvistrand-configure </dev/null >&2
judge settings-stay-purged test -e "$settings/Settings"
judge evidence-stays-purged test -e "$work"
judge collector-stays-purged getent passwd orvistrand-collect
