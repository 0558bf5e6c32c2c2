#!/usr/bin/env bash
# Menu command "Ekranı yakala" to the editor window on screen (median of 10), on the virtual desktop.
#   bench/capture-to-editor.sh [BUILD_DIR]     (default: build; build it first with scripts/setup.sh)
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(cd "${1:-$here/build}" && pwd)
ninja -C "$build" bench_capture_to_editor >/dev/null
VEXET_BINARY_DIR=$build exec bash "$here/tests/desktop/virtual-desktop.sh" -- "$build/bench/bench_capture_to_editor" 10
