#!/usr/bin/env bash
# Sets Vexet up on a Debian 12 machine and then either starts it or runs every test.
#
#   scripts/setup.sh run    install what is missing, build, start Vexet
#   scripts/setup.sh test   install what is missing, build, run the whole test suite
#
# On a Wayland session (WAYLAND_DISPLAY) Vexet runs as a native Wayland client, on an X11 one
# (DISPLAY) as an X client; without a desktop, it runs on the private virtual desktop of
# tests/desktop/virtual-desktop.sh. The tests always run on private desktops: that X11 one, then
# the Wayland one of tests/desktop/wayland-desktop.sh for the tests labelled "wayland".
# Environment: BUILD_DIR (default: build), BUILD_TYPE (default: Release), CMAKE_ARGS (extra
# configure arguments), JOBS (default: 2).
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
mode=${1:-}
case $mode in
run | test) ;;
*)
    echo "usage: $0 run|test" >&2
    exit 2
    ;;
esac

build_dir=${BUILD_DIR:-$here/build}
build_type=${BUILD_TYPE:-Release}
jobs=${JOBS:-2}

packages=(
    # build
    cmake ninja-build g++ pkg-config clang-format
    qt6-base-dev qt6-base-dev-tools qt6-svg-dev libqt6svg6 qt6-qpa-plugins qt6-translations-l10n
    libxcb1-dev libxcb-keysyms1-dev libxcb-randr0-dev libxcb-xtest0-dev libxcb-shm0-dev libxcb-xkb-dev zlib1g-dev
    libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev libyuv-dev
    # run
    gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-bad
    gstreamer1.0-plugins-ugly gstreamer1.0-libav gstreamer1.0-pulseaudio fonts-dejavu-core
    # the virtual desktop and the tests
    xserver-xorg-core xserver-xorg-video-dummy x11-xserver-utils x11-utils xauth openbox trayer
    dbus dbus-bin pulseaudio pulseaudio-utils xdotool xclip gstreamer1.0-tools libclang-rt-14-dev
    desktop-file-utils appstream libx11-dev libxkbcommon-dev at-spi2-core
    # the Wayland desktop of the tests
    sway xdg-desktop-portal xdg-desktop-portal-wlr xdg-desktop-portal-gtk pipewire pipewire-bin
    pipewire-pulse wireplumber gstreamer1.0-pipewire grim wtype wayvnc wl-clipboard qt6-wayland jq
    # ... and its ScreenCast backend: Debian's xdg-desktop-portal-wlr cannot cast without a GPU, so
    # tests/desktop/screencast-backend.sh rebuilds it from its source package (with ninja-build and
    # pkg-config above)
    dpkg-dev patch meson libdrm-dev libinih-dev libgbm-dev libpipewire-0.3-dev libwayland-dev
    wayland-protocols libsystemd-dev
    # the recording benchmark compares with ffmpeg
    ffmpeg
    # the Debian package (dpkg-buildpackage and its checks; tests/install/check-package.sh)
    debhelper lintian
)

missing=()
for package in "${packages[@]}"; do
    status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
    [[ $status == installed ]] || missing+=("$package")
done
if ((${#missing[@]})); then
    echo "setup: installing ${missing[*]}" >&2
    sudo=()
    ((EUID == 0)) || sudo=(sudo)
    "${sudo[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# shellcheck disable=SC2086 # CMAKE_ARGS is a list of arguments
cmake -S "$here" -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE="$build_type" ${CMAKE_ARGS:-} >/dev/null
cmake --build "$build_dir" -j "$jobs"

desktop=("$here/tests/desktop/virtual-desktop.sh" --)

if [[ $mode == test ]]; then
    # The suites always run on their own virtual desktops, never on the user's: everything but the
    # Wayland tests on the X11 desktop, then the Wayland tests on the Wayland desktop.
    x11_status=0
    bash "${desktop[@]}" ctest --test-dir "$build_dir" -LE wayland --output-on-failure --timeout 600 ||
        x11_status=$?

    # The Wayland desktop casts screens through a rebuilt portal backend (see the script). Without
    # it the Wayland tests still run, but recording on Wayland cannot work and the run fails.
    backend_dir=$build_dir/screencast-backend
    backend_status=0
    backend=()
    if JOBS=$jobs bash "$here/tests/desktop/screencast-backend.sh" "$backend_dir"; then
        backend=(--screencast-backend "$backend_dir/xdg-desktop-portal-wlr")
    else
        backend_status=$?
        echo "setup: could not build the ScreenCast backend: the Wayland desktop cannot record" >&2
    fi

    wayland_desktop="$here/tests/desktop/wayland-desktop.sh"
    if ((EUID == 0)); then
        # Run by root, the Wayland desktop runs the tests as its own user, who must get through to
        # the sources, the build tree and the ScreenCast backend, and may write CTest's records.
        test_user=$(bash "$wayland_desktop" --test-user)
        tops=("$here" "$build_dir")
        [[ ! -d $backend_dir ]] || tops+=("$backend_dir")
        for top in "${tops[@]}"; do
            path=$(realpath "$top")
            while [[ $path != / ]]; do
                # Others may go through: the execute bit of "others" (a sticky folder shows it as t).
                if [[ $(stat -c %A "$path") != *[xt] ]]; then
                    echo "setup: letting the test user $test_user through $path (chmod o+x)" >&2
                    chmod o+x "$path"
                fi
                path=$(dirname "$path")
            done
        done
        mkdir -p "$build_dir/Testing"
        chown -R "$test_user:" "$build_dir/Testing"
    fi
    # Under the sanitizers: Mesa's driver, loaded by Qt's Wayland plugin, is unloaded before the
    # leak check, and only a full unwind reaches a library the suppressions can name.
    wayland_env=()
    [[ -z ${ASAN_OPTIONS:-} ]] || wayland_env=(env "ASAN_OPTIONS=$ASAN_OPTIONS:fast_unwind_on_malloc=0")
    wayland_status=0
    "${wayland_env[@]}" bash "$wayland_desktop" --tray-watcher "$build_dir/tests/wayland/tray/vexet-tray-watcher" \
        "${backend[@]}" -- ctest --test-dir "$build_dir" -L wayland --output-on-failure --timeout 600 ||
        wayland_status=$?
    ((x11_status == 0)) || exit "$x11_status"
    ((wayland_status == 0)) || exit "$wayland_status"
    exit "$backend_status"
fi

if [[ -n ${WAYLAND_DISPLAY:-} || -n ${DISPLAY:-} ]]; then
    exec "$build_dir/src/app/vexet"
fi
echo "setup: no desktop here; starting Vexet on a virtual desktop" >&2
exec bash "${desktop[@]}" sh -c '
    echo "Vexet is running on the virtual desktop $DISPLAY. To reach it from another terminal:"
    echo "    export DISPLAY=$DISPLAY XAUTHORITY=$XAUTHORITY"
    echo "then e.g. \"import -window root shot.png\" for a picture, \"xdotool\" to click, or"
    echo "\"x11vnc -display \$DISPLAY -auth \$XAUTHORITY\" to watch it. Ctrl+C stops Vexet and the desktop."
    exec "$1"' sh "$build_dir/src/app/vexet"
