#!/usr/bin/env bash
# How long the main thread is held up while a recording starts, runs and finishes.
#
#   bench/main-thread.sh [BUILD_DIR] [x11|wayland|both] [ROUNDS]      (defaults: build, both, 5)
#
# Records 1920 × 1080 moving content for 5 s with system audio and the microphone (vexet-record-check
# --heartbeat: the engine of the app, on its main thread, beside a timer that fires every 10 ms) on
# the X11 virtual desktop and on the Wayland test desktop (through the ScreenCast portal), ROUNDS
# times each, and prints for each phase (starting: from the start through the countdown to the first
# data in the file; recording; finishing: from the stop to the finished file) the longest gap
# between two beats, in milliseconds: the median and the largest over the rounds. Every round's
# figures go to standard error. A gap is the time the event loop was kept from running: 10 ms when
# nothing holds it up.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

if [[ ${1:-} != --inside ]]; then
    build=$(cd "${1:-$here/build}" && pwd)
    desktops=${2:-both}
    rounds=${3:-5}
    ninja -C "$build" vexet-record-check vexet-moving-content >/dev/null
    if [[ $desktops == x11 || $desktops == both ]]; then
        echo "== X11 =="
        bash "$here/tests/desktop/virtual-desktop.sh" --screen 1920x1080 -- \
            bash "${BASH_SOURCE[0]}" --inside "$build" x11 "$rounds"
    fi
    if [[ $desktops == wayland || $desktops == both ]]; then
        echo "== Wayland =="
        ninja -C "$build" vexet-tray-watcher >/dev/null
        bash "$here/tests/desktop/screencast-backend.sh" "$build/screencast-backend"
        bash "$here/tests/desktop/wayland-desktop.sh" --tray-watcher "$build/tests/wayland/tray/vexet-tray-watcher" \
            --screencast-backend "$build/screencast-backend/xdg-desktop-portal-wlr" -- \
            bash "${BASH_SOURCE[0]}" --inside "$build" wayland "$rounds"
    fi
    exit 0
fi

build=$2
desktop=$3
rounds=$4
source "$here/bench/figures.sh"
work=$(mktemp -d)
content=
trap '[[ -n $content ]] && kill "$content" 2>/dev/null; rm -rf "$work"' EXIT
[[ $desktop == wayland ]] && echo HEADLESS-1 >"$VEXET_SCREENCAST_ANSWER"

"$build/tests/video/vexet-moving-content" 0 0 1920 1080 60 bars &
content=$!
sleep 2

largest() { printf '%s\n' "$@" | sort -g | tail -n 1; }

starting=() recording=() finishing=()
for ((round = 1; round <= rounds; round++)); do
    log=$work/round.log
    target=(--display DUMMY0)
    [[ $desktop == wayland ]] && target=(--display x)
    if ! "$build/tools/record-check/vexet-record-check" "${target[@]}" --seconds 5 --microphone --heartbeat \
        --out "$work/round.mp4" >"$log"; then
        echo "round $round failed:" >&2
        cat "$log" >&2
        exit 1
    fi
    gap() { awk -v phase="$1" '$2 == "heartbeat" && $3 == phase { print $4 }' "$log"; }
    starting+=("$(gap starting)") recording+=("$(gap recording)") finishing+=("$(gap finishing)")
    echo "  round $round: starting $(gap starting) ms, recording $(gap recording) ms, finishing $(gap finishing) ms" >&2
done
printf '%-10s %12s %12s\n' phase "median ms" "largest ms"
for phase in starting recording finishing; do
    declare -n gaps=$phase
    printf '%-10s %12s %12s\n' "$phase" "$(median "${gaps[@]}")" "$(largest "${gaps[@]}")"
done
