#!/usr/bin/env bash
# Screenshots on the Wayland test desktop through the Screenshot portal: vexet-capture against
# grim (the compositor's own tool), where the helper's time goes, and `vexet --capture screen` to
# the editor on screen. Every figure is a median of 10 runs.
#   bench/wayland-capture.sh [BUILD_DIR]     (default: build; build it first with scripts/setup.sh)
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(cd "${1:-$here/build}" && pwd)
ninja -C "$build" bench_wayland_capture vexet vexet-capture vexet-tray-watcher >/dev/null
VEXET_BINARY_DIR=$build exec bash "$here/tests/desktop/wayland-desktop.sh" \
    --tray-watcher "$build/tests/wayland/tray/vexet-tray-watcher" -- \
    env VEXET_BINARY_DIR="$build" "$build/bench/bench_wayland_capture" 10
