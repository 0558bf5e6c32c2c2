#!/usr/bin/env bash
# Installs a build into a scratch root and checks that every file lands in its XDG place.
set -euo pipefail
build=$1
prefix=$(sed -n 's/^CMAKE_INSTALL_PREFIX:PATH=//p' "$build/CMakeCache.txt")
sysconf=$(sed -n 's/^CMAKE_INSTALL_SYSCONFDIR:PATH=//p' "$build/CMakeCache.txt")
[[ $sysconf == /* ]] || sysconf=$prefix/$sysconf
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
failures=0
check() {
    if eval "$2"; then echo "ok: $1"; else echo "FAILED: $1"; failures=$((failures + 1)); fi
}

DESTDIR=$root cmake --install "$build" >/dev/null
check "the program is in bin" "[[ -x '$root$prefix/bin/vexet' ]]"
check "its screenshot helper is beside it" "[[ -x '$root$prefix/bin/vexet-capture' ]]"
check "the icon is a hicolor SVG" "grep -q '<svg' '$root$prefix/share/icons/hicolor/scalable/apps/vexet.svg'"
desktop=$root$prefix/share/applications/vexet.desktop
check "the desktop file exists" "[[ -f '$desktop' ]]"
check "the desktop file starts vexet" "grep -qx 'Exec=vexet' '$desktop'"
check "the desktop file names its icon" "grep -qx 'Icon=vexet' '$desktop'"
check "the desktop file is a Utility" "grep -qx 'Categories=Utility;' '$desktop'"
check "starting with the session is not installed by default" "[[ ! -e '$root$sysconf/xdg/autostart/vexet.desktop' ]]"

DESTDIR=$root cmake --install "$build" --component autostart >/dev/null
autostart=$root$sysconf/xdg/autostart/vexet.desktop
check "the autostart entry installs on request" "[[ -f '$autostart' ]]"
check "the autostart entry starts vexet" "grep -qx 'Exec=vexet' '$autostart'"
if command -v desktop-file-validate >/dev/null; then
    check "desktop-file-validate accepts both entries" "desktop-file-validate '$desktop' '$autostart'"
fi
echo "install: $failures failed"
((failures == 0))
