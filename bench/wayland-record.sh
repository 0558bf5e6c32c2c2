#!/usr/bin/env bash
# Recording on the Wayland test desktop through the ScreenCast portal and PipeWire: Vexet's engine
# (vexet-record-check) against a reference recorder made of GStreamer's own pieces,
#   gst-launch-1.0 pipewiresrc … ! videoconvert ! the engine's encoder (bench_recording_branches) ! mp4mux
# on a stream of the same portal (bench_screencast_session opens it and hands the descriptor over).
#
#   bench/wayland-record.sh [BUILD_DIR] [SECONDS]      (defaults: build, 60)
#
# On the 1920 × 1080 output with full-screen moving content, records SECONDS at 30 and at 60 frames
# per second, video only (the reference has no sound), and prints for each: frames in the file ÷
# frames expected (SECONDS × rate), CPU seconds per recorded second of the whole process (for Vexet
# with its countdown and finishing step), and the ratio Vexet ÷ reference. Both ask the stream for
# at most the rate and make it constant with videorate (mp4mux takes no frames without times), so
# the reference is the same picture path without the program around it. Then Vexet once more with
# system audio, as users record.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

if [[ ${1:-} != --inside ]]; then
    build=$(cd "${1:-$here/build}" && pwd)
    seconds=${2:-60}
    ninja -C "$build" vexet-record-check bench_screencast_session bench_recording_branches vexet-moving-content \
        vexet-tray-watcher >/dev/null
    bash "$here/tests/desktop/screencast-backend.sh" "$build/screencast-backend"
    exec bash "$here/tests/desktop/wayland-desktop.sh" --tray-watcher "$build/tests/wayland/tray/vexet-tray-watcher" \
        --screencast-backend "$build/screencast-backend/xdg-desktop-portal-wlr" -- \
        bash "$here/bench/wayland-record.sh" --inside "$build" "$seconds"
fi

build=$2
seconds=$3
work=$(mktemp -d)
trap 'kill "${content:-0}" 2>/dev/null || true; rm -rf "$work"' EXIT
echo HEADLESS-1 >"$VEXET_SCREENCAST_ANSWER"

# Alone on the first output's workspace, the window fills the output.
"$build/tests/video/vexet-moving-content" 0 0 1920 1080 60 bars &
content=$!
sleep 2

frames() { ffprobe -v error -count_frames -select_streams v:0 -show_entries stream=nb_read_frames -of csv=p=0 "$1"; }

# "cpu_seconds recorded_seconds frames" of one run of the engine.
vexet() {
    local fps=$1 out=$work/vexet.mp4 times=$work/vexet.time
    shift
    rm -f "$out"
    /usr/bin/time -f '%U %S' -o "$times" "$build/tools/record-check/vexet-record-check" --display x --fps "$fps" \
        --seconds "$seconds" --no-cursor --out "$out" "$@" >"$work/vexet.log"
    local recorded
    recorded=$(awk '$2 == "recorded" { print $3 }' "$work/vexet.log")
    echo "$(awk '{ print $1 + $2 }' "$times") $recorded $(frames "$out")"
}

# The same for the reference; stopped with an end of stream after SECONDS.
reference() {
    local fps=$1 out=$work/reference.mp4 times=$work/reference.time encoder
    rm -f "$out"
    read -ra encoder <<<"$("$build/bench/bench_recording_branches" encoder 1920 1080 "$fps")"
    "$build/bench/bench_screencast_session" /usr/bin/time -f '%U %S %e' -o "$times" \
        timeout -s INT "$seconds" gst-launch-1.0 -q -e pipewiresrc 'fd={fd}' 'path={node}' do-timestamp=true \
        ! "video/x-raw,max-framerate=$fps/1" ! videorate ! "video/x-raw,framerate=$fps/1" \
        ! videoconvert ! video/x-raw,format=I420 \
        ! "${encoder[@]}" ! mp4mux ! filesink location="$out" >/dev/null || true
    # GNU time puts "Command exited with non-zero status 124" (the stop by timeout) before its figures.
    echo "$(tail -n 1 "$times" | awk '{ print $1 + $2, $3 }') $(frames "$out")"
}

printf '%-26s %14s %14s %14s\n' "${seconds} s at 1920×1080" "frames/expected" "CPU s per s" "CPU ratio"
for fps in 30 60; do
    read -r our_cpu our_seconds our_frames < <(vexet "$fps" --no-system-audio)
    read -r ref_cpu ref_seconds ref_frames < <(reference "$fps")
    awk -v fps="$fps" -v oc="$our_cpu" -v os="$our_seconds" -v of="$our_frames" \
        -v rc="$ref_cpu" -v rs="$ref_seconds" -v rf="$ref_frames" 'BEGIN {
            printf "%-26s %14.3f %14.3f\n", "Vexet " fps " fps", of / (os * fps), oc / os
            printf "%-26s %14.3f %14.3f %14.2f\n", "reference " fps " fps", rf / (rs * fps), rc / rs, (oc / os) / (rc / rs)
        }'
done
read -r our_cpu our_seconds our_frames < <(vexet 30)
awk -v oc="$our_cpu" -v os="$our_seconds" -v of="$our_frames" 'BEGIN {
    printf "%-26s %14.3f %14.3f\n", "Vexet 30 fps, system audio", of / (os * 30), oc / os
}'
