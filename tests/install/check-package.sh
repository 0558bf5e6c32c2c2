#!/usr/bin/env bash
# Builds the Debian package the Debian way (dpkg-buildpackage -b -us -uc on a copy of the sources),
# checks it with lintian, installs it with apt-get, runs the installed programs (the helper's
# --help; Vexet on the virtual desktop until its tray icon shows and a screen capture opens the
# editor), removes it and checks that nothing of it is left.
#
#   tests/install/check-package.sh BUILD_DIR
#
# Run as root on a Debian 12 machine with the build dependencies installed (scripts/setup.sh
# installs them). BUILD_DIR: a build with the tests, for its vexet-installed-check. The package
# is built without its tests (DEB_BUILD_OPTIONS=nocheck): they run from BUILD_DIR. Environment:
# JOBS (default: 2), VEXET_PACKAGE_DIR (if set, the built packages are copied there).
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
build=$(realpath "$1")
jobs=${JOBS:-2}
((EUID == 0)) || {
    echo "check-package: run as root (it installs and removes the package)" >&2
    exit 2
}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
check() { # DESCRIPTION COMMAND...
    local description=$1
    shift
    if "$@"; then echo "ok: $description"; else echo "FAILED: $description"; failures=$((failures + 1)); fi
}

# dpkg-buildpackage builds inside the source tree and writes the packages into its parent folder:
# a copy of the project's files (those git knows, the ignored build folders left out) keeps both
# away from the checkout.
version=$(dpkg-parsechangelog -l "$here/debian/changelog" -S Version)
source=$work/vexet-$version
mkdir "$source"
(
    cd "$here"
    git ls-files -z --cached --others --exclude-standard |
        while IFS= read -r -d '' file; do [[ ! -e $file ]] || printf '%s\0' "$file"; done |
        xargs -0 cp --parents -t "$source"
)

echo "== dpkg-buildpackage -b -us -uc"
started=$(date +%s)
(cd "$source" && DEB_BUILD_OPTIONS="nocheck parallel=$jobs noautodbgsym" dpkg-buildpackage -b -us -uc)
echo "package: dpkg-buildpackage took $(($(date +%s) - started)) s"
deb=$(echo "$work"/vexet_"$version"_"$(dpkg --print-architecture)".deb)
check "the package is vexet_${version}_ARCH.deb" test -f "$deb"
[[ -z ${VEXET_PACKAGE_DIR:-} ]] || cp "$work"/*.deb "$work"/*.changes "$work"/*.buildinfo "$VEXET_PACKAGE_DIR"/
echo "package: installed size $(dpkg-deb -f "$deb" Installed-Size) KiB"
echo "package: depends on $(dpkg-deb -f "$deb" Depends)"

echo "== lintian"
# Errors fail the check; warnings and notes are printed (what stays is overridden, with its reason,
# in debian/vexet.lintian-overrides).
check "lintian reports no errors" lintian --fail-on error --display-info "$work"/vexet_"$version"_*.changes

echo "== apt-get install"
check "apt-get installs the package and what it needs" \
    env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "$deb"
mapfile -t files < <(dpkg -L vexet)
for path in /usr/bin/vexet /usr/bin/vexet-capture /usr/share/applications/vexet.desktop \
    /usr/share/icons/hicolor/scalable/apps/vexet.svg /usr/share/man/man1/vexet.1.gz \
    /usr/share/man/man1/vexet-capture.1.gz /usr/share/doc/vexet/examples/vexet-autostart.desktop \
    /usr/share/doc/vexet/copyright; do
    check "the package installs $path" test -e "$path"
done
metainfo=$(printf '%s\n' "${files[@]}" | grep -m1 '^/usr/share/metainfo/.*\.metainfo\.xml$' || true)
check "the package installs its AppStream metainfo" test -n "$metainfo"
check "desktop-file-validate accepts the installed entries" \
    desktop-file-validate /usr/share/applications/vexet.desktop /usr/share/doc/vexet/examples/vexet-autostart.desktop
check "appstreamcli validate accepts the installed metainfo" appstreamcli validate --no-net "$metainfo"
check "man finds the manual page of vexet" man -w vexet
check "man finds the manual page of vexet-capture" man -w vexet-capture
help=$(env -u DISPLAY -u WAYLAND_DISPLAY vexet-capture --help) || true
check "vexet-capture --help answers from /usr/bin" test "${help%%$'\n'*}" = \
    "Kullanım: vexet-capture [-x] [-t png|jpg] [-D N | -i -s | -i -w [-o]] DOSYA"
check "vexet --version names the package's version" \
    test "$(env -u DISPLAY -u WAYLAND_DISPLAY vexet --version)" = "Vexet $version"

echo "== the installed Vexet on the virtual desktop"
# A fresh user: the first start shows the welcome window beside the tray icon.
cat >"$work/run-installed.sh" <<'SCRIPT'
config=$(mktemp -d)
XDG_CONFIG_HOME=$config /usr/bin/vexet &
pid=$!
status=0
XDG_CONFIG_HOME=$config "$1" "$pid" /usr/bin/vexet || status=$?
kill -TERM "$pid"
vexet_status=0
wait "$pid" || vexet_status=$?
rm -rf "$config"
((status != 0)) || status=$vexet_status
exit "$status"
SCRIPT
check "the installed Vexet shows its tray icon and opens the editor" \
    bash "$here/tests/desktop/virtual-desktop.sh" -- bash "$work/run-installed.sh" "$build/tests/install/vexet-installed-check"

echo "== apt-get remove"
check "apt-get removes the package" env DEBIAN_FRONTEND=noninteractive apt-get remove -y -qq vexet
check "dpkg keeps no record of it (not even configuration files)" \
    test "$(dpkg-query -W -f='${db:Status-Status}' vexet 2>/dev/null || echo not-installed)" = not-installed
left=()
for path in "${files[@]}"; do
    [[ $path != /. ]] || continue
    # A folder may stay when another package has files in it.
    if [[ -d $path && ! -L $path ]]; then
        [[ ! -e $path ]] || dpkg -S "$path" >/dev/null 2>&1 || left+=("$path")
    elif [[ -e $path || -L $path ]]; then
        left+=("$path")
    fi
done
check "nothing of the ${#files[@]} installed paths is left${left:+: ${left[*]}}" test "${#left[@]}" -eq 0

echo "package: $failures failed"
((failures == 0))
