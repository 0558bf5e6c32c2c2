#!/usr/bin/env bash
# Sets Vexet up on a Debian 12 machine and then either starts it or runs every test.
#
#   scripts/setup.sh run    install what is missing, build, start Vexet
#   scripts/setup.sh test   install what is missing, build, run the whole test suite
#
# Without a desktop (no DISPLAY), Vexet and the tests run on the private virtual desktop of
# tests/desktop/virtual-desktop.sh. Environment: BUILD_DIR (default: build), BUILD_TYPE (default:
# Release), CMAKE_ARGS (extra configure arguments), JOBS (default: 2).
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
    libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev
    # run
    gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-bad
    gstreamer1.0-plugins-ugly gstreamer1.0-libav gstreamer1.0-pulseaudio fonts-dejavu-core
    # the virtual desktop and the tests
    xserver-xorg-core xserver-xorg-video-dummy x11-xserver-utils x11-utils xauth openbox trayer
    dbus dbus-bin pulseaudio pulseaudio-utils xdotool xclip gstreamer1.0-tools libclang-rt-14-dev
    desktop-file-utils libx11-dev
    # the recording benchmark compares with ffmpeg
    ffmpeg
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
    # The suite always runs on its own virtual desktop, never on the user's.
    exec bash "${desktop[@]}" ctest --test-dir "$build_dir" --output-on-failure --timeout 600
fi

if [[ -n ${DISPLAY:-} ]]; then
    exec "$build_dir/src/app/vexet"
fi
echo "setup: no desktop here; starting Vexet on a virtual desktop" >&2
exec bash "${desktop[@]}" sh -c '
    echo "Vexet is running on the virtual desktop $DISPLAY. To reach it from another terminal:"
    echo "    export DISPLAY=$DISPLAY XAUTHORITY=$XAUTHORITY"
    echo "then e.g. \"import -window root shot.png\" for a picture, \"xdotool\" to click, or"
    echo "\"x11vnc -display \$DISPLAY -auth \$XAUTHORITY\" to watch it. Ctrl+C stops Vexet and the desktop."
    exec "$1"' sh "$build_dir/src/app/vexet"
