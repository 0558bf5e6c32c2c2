#!/usr/bin/env bash
# Recording against ffmpeg on the virtual desktop, and the finishing step on a 10-minute file.
#
#   bench/record-speed.sh [BUILD_DIR] [SECONDS]      (defaults: build, 60)
#
# On one 1920 × 1080 monitor with full-screen moving content (CONTENT: bars, the default, or
# desktop; see vexet-moving-content) and a tone playing into the speaker, records SECONDS at 30 and
# at 60 frames per second with system audio, once with Vexet's engine (vexet-record-check, its
# default settings) and once with ffmpeg as people run it: x11grab + pulse, libx264 with the same
# speed preset and CRF 23 and its own defaults otherwise (its key-frame interval and B-frames),
# 4:2:0 pictures (what players play) and the same audio (FFmpeg's AAC with its fast coder, 128
# kbit/s). It prints for each: frames written ÷ frames expected (ffmpeg passes the frames it took
# through as they came, so that a frame it missed counts), CPU seconds per recorded second while
# recording and for the whole run (for Vexet with its countdown and finishing step; for ffmpeg the
# two are the same), bytes per second, the share of the video's bytes in key frames, and the
# ratios ours ÷ ffmpeg, each the median of ROUNDS rounds (every round's figures go to standard
# error). Then it makes a 10-minute recording with two audio tracks and times the finishing step on
# it.
#
# What the two encoders make of the same pictures, with the quality of each (SSIM), is measured by
# bench/encoder.sh; what each captures, by bench/capture-path.sh.
#
# Environment: PRESETS (default "superfast"): the x264 speed presets to compare; ROUNDS (default 3);
# CONTENT (default bars);
# FINISH=0 skips the finishing step. Needs ffmpeg (apt-get install ffmpeg) and gstreamer1.0-tools.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$here/bench/figures.sh"
run_inside_desktop record-speed 60 "${1:-}" "${2:-}" vexet-record-check vexet-moving-content bench_finish_speed

build=$2
seconds=$3
presets=${PRESETS:-superfast}
rounds=${ROUNDS:-3}
work=$(mktemp -d "${TMPDIR:-/tmp}/vexet-record-speed.XXXXXX")
ticks=$(getconf CLK_TCK)
pids=()
cleanup() {
    for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
    wait 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT

# CPU time of a process so far, in clock ticks (user + system, its threads included).
cpu_ticks() { awk '{ print $14 + $15 }' "/proc/$1/stat"; }
video_frames() {
    ffprobe -v error -select_streams v:0 -count_packets -show_entries stream=nb_read_packets -of csv=p=0 "$1"
}
duration() { ffprobe -v error -show_entries format=duration -of csv=p=0 "$1"; }
# The share of the video's bytes in key frames, in per cent: each key frame of flat screen content
# costs as much as dozens of others.
key_share() {
    ffprobe -v error -select_streams v:0 -show_entries packet=size,flags -of csv=p=0 "$1" |
        awk -F, '{ all += $1; if ($2 ~ /K/) keys += $1 } END { printf "%.1f", 100 * keys / all }'
}

"$build/tests/video/vexet-moving-content" 0 0 1920 1080 60 "${CONTENT:-bars}" &
pids+=($!)
gst-launch-1.0 -q audiotestsrc is-live=true freq=440 volume=0.3 ! pulsesink device=vexet_speaker &
pids+=($!)
sleep 2

# Prints "frames_ratio cpu_per_second whole_cpu_per_second bytes_per_second" for one recording with
# the engine: the CPU time while it records, and that of the whole run with the countdown and the
# finishing step, each per recorded second.
ours() {
    local fps=$1 preset=$2 out=$work/ours-$1-$2.mp4 log=$work/ours.log pid cpu0 cpu1 whole now recorded
    "$build/tools/record-check/vexet-record-check" --display DUMMY0 --fps "$fps" --seconds "$seconds" \
        --preset "$preset" --out "$out" >"$log" &
    pid=$!
    until grep -q ' status recording ' "$log"; do sleep 0.02; done
    cpu0=$(cpu_ticks "$pid")
    until grep -q ' recorded ' "$log"; do sleep 0.02; done
    cpu1=$(cpu_ticks "$pid")
    whole=$cpu1
    while now=$(cpu_ticks "$pid" 2>/dev/null); do
        whole=$now
        sleep 0.1
    done
    wait "$pid" || { echo "the engine failed:" >&2; cat "$log" >&2; exit 1; }
    recorded=$(awk '/ recorded /{ print $3 }' "$log")
    awk -v frames="$(video_frames "$out")" -v fps="$fps" -v rec="$recorded" -v cpu=$((cpu1 - cpu0)) \
        -v whole="$whole" -v ticks="$ticks" -v bytes="$(stat -c %s "$out")" -v dur="$(duration "$out")" \
        -v keys="$(key_share "$out")" \
        'BEGIN { printf "%.4f %.3f %.3f %.0f %s\n", frames / (fps * rec), cpu / ticks / rec, whole / ticks / rec, bytes / dur, keys }'
}

theirs() {
    local fps=$1 preset=$2 out=$work/ffmpeg-$1-$2.mp4 pid cpu=0 now
    ffmpeg -hide_banner -loglevel error -y -thread_queue_size 1024 -f x11grab -framerate "$fps" \
        -video_size 1920x1080 -draw_mouse 1 -i "$DISPLAY+0,0" -thread_queue_size 1024 -f pulse \
        -i vexet_speaker.monitor -c:v libx264 -preset "$preset" -crf 23 \
        -pix_fmt yuv420p -c:a aac -aac_coder fast -b:a 128k -ar 48000 -ac 2 -fps_mode passthrough -t "$seconds" "$out" \
        </dev/null &
    pid=$!
    while now=$(cpu_ticks "$pid" 2>/dev/null); do
        cpu=$now
        sleep 0.1
    done
    wait "$pid" || { echo "ffmpeg failed" >&2; exit 1; }
    # ffmpeg records exactly the time asked for (-t): that is what its frames are counted against.
    awk -v frames="$(video_frames "$out")" -v fps="$fps" -v dur="$seconds" -v cpu="$cpu" \
        -v ticks="$ticks" -v bytes="$(stat -c %s "$out")" -v keys="$(key_share "$out")" \
        'BEGIN { printf "%.4f %.3f %.3f %.0f %s\n", frames / (fps * dur), cpu / ticks / dur, cpu / ticks / dur, bytes / dur, keys }'
}


row() { printf '%-10s %4s %-8s %11s %11s %11s %11s %10s\n' "$@"; }
row preset fps who frames/exp cpu-s/s whole-cpu bytes/s key-bytes%
for preset in $presets; do
    for fps in 30 60; do
        of=() oc=() ow=() ob=() ok=() tf=() tc=() tw=() tb=() tk=()
        for ((round = 0; round < rounds; round++)); do
            # Each round in the other order, so that a drift of the machine falls on both alike.
            if ((round % 2 == 0)); then
                read -r a b c d k < <(ours "$fps" "$preset")
                read -r e f g h l < <(theirs "$fps" "$preset")
            else
                read -r e f g h l < <(theirs "$fps" "$preset")
                read -r a b c d k < <(ours "$fps" "$preset")
            fi
            of+=("$a") oc+=("$b") ow+=("$c") ob+=("$d") ok+=("$k")
            tf+=("$e") tc+=("$f") tw+=("$g") tb+=("$h") tk+=("$l")
            echo "  round $((round + 1)) at $fps fps: vexet $a $b $c $d $k, ffmpeg $e $f $g $h $l" >&2
        done
        o=("$(median "${of[@]}")" "$(median "${oc[@]}")" "$(median "${ow[@]}")" "$(median "${ob[@]}")"
            "$(median "${ok[@]}")")
        t=("$(median "${tf[@]}")" "$(median "${tc[@]}")" "$(median "${tw[@]}")" "$(median "${tb[@]}")"
            "$(median "${tk[@]}")")
        row "$preset" "$fps" vexet "${o[@]}"
        row "$preset" "$fps" ffmpeg "${t[@]}"
        row "$preset" "$fps" ratio "$(ratio "${o[0]}" "${t[0]}")" "$(ratio "${o[1]}" "${t[1]}")" \
            "$(ratio "${o[2]}" "${t[2]}")" "$(ratio "${o[3]}" "${t[3]}")" -
    done
done

if [[ ${FINISH:-1} != 0 ]]; then
    # Ten minutes at 1920 × 1080, 30 frames per second, two tracks of sound (pink noise at two levels,
    # closer to music and speech than pure tones), fragmented like a staging file.
    long=$work/long.mp4
    gst-launch-1.0 -q mp4mux name=m fragment-duration=1000 ! filesink location="$long" \
        videotestsrc num-buffers=18000 pattern=smpte horizontal-speed=3 \
        ! video/x-raw,width=1920,height=1080,framerate=30/1 \
        ! x264enc speed-preset=ultrafast pass=qual quantizer=23 key-int-max=60 bframes=3 ! h264parse ! queue ! m. \
        audiotestsrc num-buffers=28125 samplesperbuffer=1024 wave=pink-noise volume=0.3 \
        ! audio/x-raw,rate=48000,channels=2 ! avenc_aac aac-coder=fast ! aacparse ! queue ! m. \
        audiotestsrc num-buffers=28125 samplesperbuffer=1024 wave=pink-noise volume=0.1 \
        ! audio/x-raw,rate=48000,channels=2 ! avenc_aac aac-coder=fast ! aacparse ! queue ! m.
    "$build/bench/bench_finish_speed" "$long"
fi
