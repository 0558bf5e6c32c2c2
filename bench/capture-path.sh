#!/usr/bin/env bash
# Capture alone: the pictures each recorder hands to its encoder, Vexet's against ffmpeg's.
#
#   bench/capture-path.sh [BUILD_DIR] [SECONDS]      (defaults: build, 10)
#
# On one 1920 × 1080 monitor of the virtual desktop with full-screen moving content (CONTENT: bars,
# the default, or desktop; see tests/video/support/moving_content.cpp), each recorder
# captures SECONDS at 30 and at 60 frames per second and writes, instead of encoding, the raw I420
# pictures its encoder would get: Vexet's source and conversion exactly as a recording runs them
# (bench_recording_branches), ffmpeg's x11grab converted to yuv420p as ffmpeg does before libx264.
# For each it prints the frames ÷ the frames its time span should hold, the gaps between the pictures' times (mean
# and longest, in frame durations; pictures more than half a frame late), the CPU seconds per
# second of capture and conversion, and what the same encoder (Vexet's) makes of the pictures:
# bytes per second and key frames per ten seconds (x264 starts one wherever a picture differs too
# much from the one before). Then the content is frozen and both take the same still
# picture: each result is compared with the exact conversion of the screen's RGB pixels by the
# BT.709 and by the BT.601 matrix (PSNR of Y, U, V in dB; identical planes print inf), and the colours
# each recorder declares in its H.264 file are shown.
#
# Needs ffmpeg, ffprobe and gstreamer1.0-tools.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$here/bench/figures.sh"
run_inside_desktop capture-path 10 "${1:-}" "${2:-}" bench_recording_branches vexet-moving-content

build=$2
seconds=$3
work=$(mktemp -d "$(scratch_dir)/vexet-capture-path.XXXXXX")
content=
cleanup() {
    if [[ -n $content ]]; then
        kill -CONT "$content" 2>/dev/null || true
        kill "$content" 2>/dev/null || true
    fi
    wait 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT

"$build/tests/video/vexet-moving-content" 0 0 1920 1080 60 "${CONTENT:-bars}" &
content=$!
sleep 2

grab=(-f x11grab -video_size 1920x1080 -draw_mouse 0)

# vexet FPS OUT [SECONDS]: Vexet's pictures into a Matroska file of raw I420, for SECONDS (the
# pipeline is interrupted and ends its file), printing the CPU time.
vexet() {
    local words
    read -ra words <<<"$("$build/bench/bench_recording_branches" pictures 1920 1080 "$1") matroskamux ! filesink location=$2"
    cpu_of timeout -s INT "${3:-$seconds}" gst-launch-1.0 -q -e "${words[@]}"
}
# ffmpeg FPS OUT [SECONDS]: the same from ffmpeg.
ffmpeg_grab() {
    cpu_of ffmpeg -hide_banner -loglevel error -y "${grab[@]}" -framerate "$1" -i "$DISPLAY+0,0" -t "${3:-$seconds}" \
        -fps_mode passthrough -pix_fmt yuv420p -c:v rawvideo -f matroska "$2"
}
# The frames of a file against those its time span should hold, and the gaps between their times in
# frame durations: "frames÷expected mean longest late".
timing() {
    ffprobe -v error -select_streams v:0 -show_entries packet=pts_time -of csv=p=0 "$1" | sort -g | awk -v fps="$2" '
        NR == 1 { first = $1 }
        NR > 1 { gap = ($1 - last) * fps; sum += gap; if (gap > longest) longest = gap; if (gap > 1.5) late++ }
        { last = $1 }
        END { printf "%.4f %.3f %.2f %d\n", NR / ((last - first) * fps + 1), (NR > 1) ? sum / (NR - 1) : 0, longest, late }'
}

# What Vexet's encoder makes of a file of raw pictures, every one of them, at the file's rate
# (Matroska's millisecond times leave some of a 60 fps file's pictures without one):
# "bytes_per_second key_frames_per_10_s".
encoded() {
    local words
    read -ra words <<<"fdsrc fd=0 ! y4mdec ! $("$build/bench/bench_recording_branches" encoder 1920 1080 "$2") ! mp4mux ! filesink location=$work/encoded.mp4"
    ffmpeg -v error -i "$1" -fps_mode passthrough -r "$2" -f yuv4mpegpipe - | gst-launch-1.0 -q "${words[@]}"
    ffprobe -v error -select_streams v:0 -show_entries packet=size,flags,duration_time -of compact=p=0 \
        "$work/encoded.mp4" | awk -F'|' '{
            for (i = 1; i <= NF; i++) { split($i, kv, "="); v[kv[1]] = kv[2] }
            time += v["duration_time"]; bytes += v["size"]; if (v["flags"] ~ /K/) keys++
        } END { printf "%.0f %.1f\n", bytes / time, 10 * keys / time }'
}

row() { printf '%-8s %4s %11s %10s %12s %6s %9s %10s %8s\n' "$@"; }
row who fps frames/exp mean-gap longest-gap late cpu-s/s bytes/s keys/10s
for fps in 30 60; do
    for who in vexet ffmpeg; do
        out=$work/$who-$fps.mkv
        if [[ $who == vexet ]]; then cpu=$(vexet "$fps" "$out"); else cpu=$(ffmpeg_grab "$fps" "$out"); fi
        read -r share mean longest late < <(timing "$out" "$fps")
        read -r bytes keys < <(encoded "$out" "$fps")
        row "$who" "$fps" "$share" "$mean" "$longest" "$late" \
            "$(awk -v c="$cpu" -v s="$seconds" 'BEGIN { printf "%.3f", c / s }')" "$bytes" "$keys"
        rm -f "$out"
    done
done

# The same still picture through both paths.
kill -STOP "$content"
sleep 0.5
ffmpeg -hide_banner -loglevel error -y "${grab[@]}" -i "$DISPLAY+0,0" -frames:v 1 "$work/screen.png"
vexet 30 "$work/vexet-still.mkv" 1 >/dev/null
ffmpeg_grab 30 "$work/ffmpeg-still.mkv" 1 >/dev/null
raw=(-f rawvideo -pix_fmt yuv420p)
for who in vexet ffmpeg; do
    ffmpeg -hide_banner -loglevel error -y -sseof -0.2 -i "$work/$who-still.mkv" -frames:v 1 "${raw[@]}" "$work/$who.yuv"
done
for matrix in bt709 bt470bg; do
    ffmpeg -hide_banner -loglevel error -y -i "$work/screen.png" \
        -vf "scale=out_color_matrix=$matrix:out_range=tv:flags=accurate_rnd+full_chroma_int" "${raw[@]}" \
        "$work/$matrix.yuv"
done
psnr() {
    ffmpeg -hide_banner -nostats "${raw[@]}" -s 1920x1080 -i "$1" "${raw[@]}" -s 1920x1080 -i "$2" \
        -lavfi psnr -f null - 2>&1 | sed -n 's/.*PSNR y:\([0-9.inf]*\) u:\([0-9.inf]*\) v:\([0-9.inf]*\).*/\1 \2 \3/p'
}
echo
echo "a still picture against the exact conversion of the screen's pixels (PSNR y u v, dB):"
printf '%-8s %-26s %-26s\n' who "BT.709" "BT.601"
for who in vexet ffmpeg; do
    printf '%-8s %-26s %-26s\n' "$who" "$(psnr "$work/$who.yuv" "$work/bt709.yuv")" \
        "$(psnr "$work/$who.yuv" "$work/bt470bg.yuv")"
done
kill -CONT "$content"

# The colours each declares in its file: the same second encoded by each.
read -ra words <<<"$("$build/bench/bench_recording_branches" pictures 1920 1080 30) $("$build/bench/bench_recording_branches" encoder 1920 1080 30) ! mp4mux ! filesink location=$work/vexet.mp4"
timeout -s INT 1 gst-launch-1.0 -q -e "${words[@]}" >/dev/null || true
ffmpeg -hide_banner -loglevel error -y "${grab[@]}" -framerate 30 -i "$DISPLAY+0,0" -t 1 -c:v libx264 \
    -preset superfast -pix_fmt yuv420p "$work/ffmpeg.mp4"
echo
echo "colours declared in the H.264 file (range, matrix, where the colour samples sit):"
for who in vexet ffmpeg; do
    printf '%-8s %s\n' "$who" "$(ffprobe -v error -select_streams v:0 -show_entries stream=color_range,color_space,chroma_location \
        -of csv=p=0 "$work/$who.mp4")"
done
