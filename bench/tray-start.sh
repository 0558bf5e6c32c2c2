#!/usr/bin/env bash
# Cold start of vexet to its tray icon (median of 10) and its idle memory, on the virtual desktop.
#   bench/tray-start.sh [BUILD_DIR]     (default: build; build it first with scripts/setup.sh)
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(cd "${1:-$here/build}" && pwd)
ninja -C "$build" bench_tray_start vexet >/dev/null
VEXET_BINARY_DIR=$build exec bash "$here/tests/desktop/virtual-desktop.sh" -- "$build/bench/bench_tray_start" 10
