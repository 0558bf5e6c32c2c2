#!/usr/bin/env bash
# The video encoder alone, against ffmpeg's libx264, on one lossless recording of moving content.
#
#   bench/encoder.sh [BUILD_DIR] [SECONDS]      (defaults: build, 10)
#
# On one 1920 × 1080 monitor of the virtual desktop with full-screen moving content (CONTENTS, default
# "bars desktop": see vexet-moving-content), records SECONDS at 30 and at 60 frames per second once,
# losslessly (ffmpeg: x11grab, RGB H.264 at QP 0), and converts that recording to I420 once the way
# Vexet does (its conversion, as a recording runs it) and once the way ffmpeg does before libx264.
# Every encode below reads one of these, and every figure is for the video stream alone:
# - bytes/s: the H.264 stream's bytes per second;
# - cpu: CPU seconds per second of video spent encoding (the run's CPU time less that of a run which
#   only reads the same input), the median of ROUNDS runs;
# - yuv: SSIM in dB (higher is better) of the decoded pictures against the I420 pictures the encoder
#   was given: what the encoder lost;
# - rgb: SSIM in dB of the decoded pictures, in the colours the file declares, against the lossless
#   recording: what the whole path lost, conversion included.
#
# 1. Vexet's encoder branch, exactly as a recording runs it (bench_recording_branches), against
#    ffmpeg's libx264 with the same settings, both on Vexet's I420 pictures: the bytes, their ratio,
#    and the two files' x264 settings strings (written into every H.264 stream), compared. Then
#    ffmpeg with the same settings on its own conversion: what the conversion alone changes.
# 2. The same two with the bit-rate bound that x264enc sets unless told otherwise (its default
#    bitrate property, or any other, with its VBV buffer), and ffmpeg with the same bound: the bound
#    alone accounts for the difference the live benchmark used to show.
# 3. Candidate settings for the defaults (key-frame interval, reference frames, B-frames,
#    look-ahead with macroblock tree), each a change of Vexet's branch, against ffmpeg's own
#    defaults (-preset superfast -crf 23 and nothing else, on its own conversion, as it records). The
#    first picture's time in each file is printed too: in GStreamer's fragmented MP4, which has no
#    edit list, B-frames' reordering delay shifts the whole picture late against the sound (a
#    recording's finishing step takes it back with an edit list).
# 4. Vexet's defaults at CRF 22 and 24 too: the bytes Vexet needs for the SSIM (rgb) of ffmpeg's
#    defaults, read off the straight line through the two nearest of the three (log bytes against dB).
#
# Environment: ROUNDS (default 3). Needs ffmpeg, ffprobe and gstreamer1.0-tools.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$here/bench/figures.sh"
run_inside_desktop encoder 10 "${1:-}" "${2:-}" bench_recording_branches vexet-moving-content

build=$2
seconds=$3
rounds=${ROUNDS:-3}
work=$(mktemp -d "$(scratch_dir)/vexet-encoder.XXXXXX")
content=
cleanup() {
    [[ -n $content ]] && kill "$content" 2>/dev/null
    wait 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT

stream_bytes() {
    ffprobe -v error -select_streams v:0 -show_entries packet=size -of csv=p=0 "$1" | awk '{ s += $1 } END { print s }'
}
frames() {
    ffprobe -v error -select_streams v:0 -count_packets -show_entries stream=nb_read_packets -of csv=p=0 "$1"
}
# SSIM in dB of a file against a reference, frame by frame (both numbered alike, whatever their own
# times), in the given pixel format.
ssim_db() {
    ffmpeg -hide_banner -nostats -i "$1" -i "$2" -lavfi \
        "[0:v]settb=1/1000,setpts=N,format=$3[a];[1:v]settb=1/1000,setpts=N,format=$3[b];[a][b]ssim" \
        -f null - 2>&1 | sed -n 's/.*All:[0-9.]* (\([0-9.inf]*\)).*/\1/p'
}
settings() { strings -n 20 "$1" | grep -o 'x264 - core.*' | head -n 1 | sed 's/.*options: //'; }
# The median CPU time of ROUNDS runs of a command, less the given baseline, per second of video.
encode_cpu() {
    local base=$1 runs=()
    shift
    for ((r = 0; r < rounds; r++)); do runs+=("$(cpu_of "$@")"); done
    awk -v t="$(median "${runs[@]}")" -v b="$base" -v s="$seconds" 'BEGIN { printf "%.3f", (t - b) / s }'
}
row() { printf '%-24s %9s %8s %8s %8s %s\n' "$@"; }

# ours NAME ENCODER-DESCRIPTION: Vexet's I420 pictures through the encoder; prints
# "bytes cpu yuv rgb start" and keeps the file as $work/NAME.mp4.
ours() {
    local out=$work/$1.mp4 words cpu
    read -ra words <<<"filesrc location=$work/vexet.y4m ! y4mdec ! capssetter caps=video/x-raw,colorimetry=(string)$colours ! $2 ! mp4mux fragment-duration=1000 ! filesink location=$out"
    cpu=$(encode_cpu "$gst_base" gst-launch-1.0 -q "${words[@]}")
    result "$out" "$work/vexet.y4m" "$cpu"
}
# theirs NAME INPUT FFMPEG-OPTIONS…: the same for libx264 on the given I420 pictures.
theirs() {
    local out=$work/$1.mp4 input=$2 cpu
    shift 2
    cpu=$(encode_cpu "$ff_base" ffmpeg -v error -y -i "$input" -c:v libx264 "$@" "$out")
    result "$out" "$input" "$cpu"
}
result() {
    local start
    start=$(ffprobe -v error -select_streams v:0 -show_entries stream=start_time -of csv=p=0 "$1")
    echo "$(($(stream_bytes "$1") / seconds)) $3 $(ssim_db "$1" "$2" yuv420p) $(ssim_db "$1" "$lossless" gbrp) $start"
}

for kind in ${CONTENTS:-bars desktop}; do
    "$build/tests/video/vexet-moving-content" 0 0 1920 1080 60 "$kind" &
    content=$!
    sleep 2
    for fps in 30 60; do
        lossless=$work/lossless.mkv
        ffmpeg -hide_banner -loglevel error -y -f x11grab -framerate "$fps" -video_size 1920x1080 -draw_mouse 0 \
            -i "$DISPLAY+0,0" -t "$seconds" -c:v libx264rgb -qp 0 -preset ultrafast "$lossless"
        echo
        echo "== $kind content, 1920 × 1080 at $fps fps: $(frames "$lossless") lossless frames of $((fps * seconds)) =="
        conversion=$("$build/bench/bench_recording_branches" conversion 1920 1080 "$fps")
        encoder=$("$build/bench/bench_recording_branches" encoder 1920 1080 "$fps")
        # YUV4MPEG files keep the colour siting but not the matrix: the encoder is told it again.
        colours=$("$build/bench/bench_recording_branches" colorimetry 1920 1080 "$fps")
        echo "Vexet's encoder branch: $encoder"
        # read -ra: the descriptions are split into gst-launch's words, as a shell would split them.
        read -ra words <<<"filesrc location=$lossless ! matroskademux ! h264parse ! avdec_h264 ! $conversion y4menc ! filesink location=$work/vexet.y4m"
        gst-launch-1.0 -q "${words[@]}"
        ffmpeg -v error -y -i "$lossless" -fps_mode passthrough -pix_fmt yuv420p "$work/ffmpeg.y4m"
        read -ra words <<<"filesrc location=$work/vexet.y4m ! y4mdec ! fakesink"
        gst_base=$(median "$(cpu_of gst-launch-1.0 -q "${words[@]}")" "$(cpu_of gst-launch-1.0 -q "${words[@]}")")
        ff_base=$(median "$(cpu_of ffmpeg -v error -i "$work/vexet.y4m" -f null -)" \
            "$(cpu_of ffmpeg -v error -i "$work/vexet.y4m" -f null -)")

        keyint=$(sed -n 's/.*key-int-max=\([0-9]*\).*/\1/p' <<<"$encoder")
        refs=$(sed -n 's/.* ref=\([0-9]*\).*/\1/p' <<<"$encoder")
        bframes=$(sed -n 's/.* bframes=\([0-9]*\).*/\1/p' <<<"$encoder")
        motion=$(sed -n 's/.* me=\([a-z]*\).*/\1/p' <<<"$encoder")
        same=(-preset superfast -crf 23 -g "$keyint" -refs "$refs" -bf "$bframes" ${motion:+-me_method "$motion"})

        echo "-- 1. the same settings"
        row "" bytes/s cpu-s/s yuv-dB rgb-dB
        read -r ob oc oy orgb _ < <(ours vexet "$encoder")
        read -r tb tc ty trgb _ < <(theirs ffmpeg-same "$work/vexet.y4m" "${same[@]}")
        read -r sb sc sy srgb _ < <(theirs ffmpeg-own "$work/ffmpeg.y4m" "${same[@]}")
        row vexet "$ob" "$oc" "$oy" "$orgb"
        row "ffmpeg, same settings" "$tb" "$tc" "$ty" "$trgb"
        row "vexet ÷ ffmpeg" "$(ratio "$ob" "$tb")" "$(ratio "$oc" "$tc")"
        row "ffmpeg, own conversion" "$sb" "$sc" "$sy" "$srgb"
        if diff <(settings "$work/vexet.mp4" | tr ' ' '\n') <(settings "$work/ffmpeg-same.mp4" | tr ' ' '\n') \
            >"$work/settings.diff"; then
            echo "x264 settings, identical: $(settings "$work/vexet.mp4")"
        else
            echo "x264 settings differ (< vexet, > ffmpeg): $(grep '^[<>]' "$work/settings.diff" | tr '\n' ' ')"
        fi

        echo "-- 2. with x264enc's bit-rate bound"
        read -r bb bc by brgb _ < <(ours vexet-bound "${encoder/vbv-buf-capacity=0/bitrate=2048000}")
        bound=$(settings "$work/vexet-bound.mp4" | grep -o 'vbv_maxrate=[0-9]* vbv_bufsize=[0-9]*')
        maxrate=$(sed -n 's/vbv_maxrate=\([0-9]*\).*/\1/p' <<<"$bound")
        bufsize=$(sed -n 's/.*vbv_bufsize=\([0-9]*\)/\1/p' <<<"$bound")
        read -r fb fc fy frgb _ < <(theirs ffmpeg-bound "$work/vexet.y4m" "${same[@]}" -maxrate "${maxrate}k" \
            -bufsize "${bufsize}k")
        row "vexet, bounded" "$bb" "$bc" "$by" "$brgb"
        row "ffmpeg, bounded" "$fb" "$fc" "$fy" "$frgb"
        echo "the bound ($bound) costs vexet $(ratio "$bb" "$ob")× and ffmpeg $(ratio "$fb" "$tb")× the bytes"

        echo "-- 3. candidate defaults against ffmpeg's own"
        row "" bytes/s cpu-s/s yuv-dB rgb-dB "÷ ffmpeg's bytes, cpu; first picture at"
        read -r db dc dy drgb dstart < <(theirs ffmpeg-defaults "$work/ffmpeg.y4m" -preset superfast -crf 23)
        candidate() {
            local label=$1 b c y rgb start
            read -r b c y rgb start < <(ours "candidate-${label//[^a-zA-Z0-9]/-}" "$2")
            row "$label" "$b" "$c" "$y" "$rgb" "$(ratio "$b" "$db") $(ratio "$c" "$dc"); ${start} s"
        }
        with() {
            sed -e "s/key-int-max=[0-9]*/key-int-max=$1/" -e "s/ ref=[0-9]*/ ref=$2/" \
                -e "s/bframes=[0-9]*/bframes=$3 ${4:-}/" <<<"$encoder"
        }
        candidate "key 8 s, 1 ref, no B" "$(with $((8 * fps)) 1 0)"
        candidate "key 2 s, 1 ref, 3 B" "$(with $((2 * fps)) 1 3)"
        candidate "key 5 s, 1 ref, 3 B" "$(with $((5 * fps)) 1 3)"
        candidate "key 10 s, 1 ref, 3 B" "$(with $((10 * fps)) 1 3)"
        candidate "key 8 s, 2 refs, 3 B" "$(with $((8 * fps)) 2 3)"
        candidate "key 8 s, 1 ref, 3 B, look-ahead" "$(with $((8 * fps)) 1 3 'rc-lookahead=20 mb-tree=true')"
        candidate "vexet's defaults" "$encoder"
        row "ffmpeg's defaults" "$db" "$dc" "$dy" "$drgb" "1.000 1.000; ${dstart} s"

        echo "-- 4. at equal quality: Vexet's defaults at CRF 22 and 24 beside 23"
        points=("23 $ob $orgb")
        for q in 22 24; do
            read -r qb _ _ qrgb _ < <(rounds=1 ours "crf-$q" "${encoder/quantizer=23/quantizer=$q}")
            points+=("$q $qb $qrgb")
            row "vexet, CRF $q" "$qb" - - "$qrgb" "$(ratio "$qb" "$db")"
        done
        if awk -v b="$ob" -v q="$orgb" -v tb="$db" -v tq="$drgb" 'BEGIN { exit !(b <= tb && q >= tq) }'; then
            echo "at CRF 23 Vexet already makes fewer bytes at a better SSIM"
        else
            printf '%s\n' "${points[@]}" | sort -k3 -g | awk -v target="$drgb" -v theirs="$db" '
                { bytes[NR] = $2; db[NR] = $3 }
                END {
                    # log(bytes) against SSIM dB, straight between the two points around ffmpeg'"'"'s.
                    if (target < db[1] || target > db[NR]) {
                        printf "ffmpeg'"'"'s rgb SSIM (%s dB) lies outside those of CRF 22 to 24\n", target
                        exit
                    }
                    i = 1
                    while (i < NR - 1 && db[i + 1] < target) i++
                    t = (target - db[i]) / (db[i + 1] - db[i])
                    b = exp(log(bytes[i]) + t * (log(bytes[i + 1]) - log(bytes[i])))
                    printf "at ffmpeg'"'"'s rgb SSIM (%s dB) Vexet needs %d bytes/s: %.3f× ffmpeg'"'"'s\n", target, b, b / theirs
                }'
        fi
        rm -f "$work"/*.y4m "$work"/*.mp4
    done
    kill "$content"
    wait "$content" 2>/dev/null || true
    content=
done
