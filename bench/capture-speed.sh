#!/usr/bin/env bash
# How fast vexet-capture takes a whole 3840x2160 monitor into a PNG, next to the usual X11 tools,
# on a private virtual desktop showing a photo-like picture. Every figure is the whole process,
# from start to exit, median of 10 runs after one warm-up run.
#
#   bench/capture-speed.sh [BUILD_DIR]     (default: build; it builds vexet-capture there)
#
# Compared with: ImageMagick's "import -window root", "xwd -root | convert xwd:- out.png" and
# "ffmpeg -f x11grab ... -frames:v 1 out.png". Missing tools are installed with apt-get when
# run as root; otherwise the script names them and leaves them out.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
readonly runs=10 size=3840x2160

if [[ ${1:-} != --inside ]]; then
    build=$(cd "${1:-$here/build}" && pwd)
    ninja -C "$build" vexet-capture >/dev/null
    wanted=(import:imagemagick convert:imagemagick xwd:x11-apps ffmpeg:ffmpeg)
    missing=()
    for tool in "${wanted[@]}"; do
        command -v "${tool%%:*}" >/dev/null || missing+=("${tool#*:}")
    done
    if ((${#missing[@]})); then
        mapfile -t missing < <(printf '%s\n' "${missing[@]}" | sort -u)
        if ((EUID == 0)); then
            echo "capture-speed: installing ${missing[*]}" >&2
            apt-get update -qq
            DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
        else
            echo "capture-speed: not installed (left out): ${missing[*]}" >&2
        fi
    fi
    exec bash "$here/tests/desktop/virtual-desktop.sh" --screen "$size" -- \
        bash "${BASH_SOURCE[0]}" --inside "$build/src/app/vexet-capture"
fi

# ---------------------------------------------------------------------------------------------
# Inside the virtual desktop

ours=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# ImageMagick's own convert: a wrapper of the same name earlier on PATH would add its start-up.
convert_bin=$(command -v convert-im6.q16 || command -v convert || true)

# A photo-like background (plasma fractal) with a few window-like panels and text on it.
if [[ -z $convert_bin ]] || ! command -v display >/dev/null; then
    echo "capture-speed: ImageMagick (convert, display) is needed to show the picture" >&2
    exit 1
fi
"$convert_bin" -size "$size" -seed 7 plasma:fractal -blur 0x1 \
    -fill '#f2f2f2' -draw 'rectangle 300,200 1700,1300' \
    -fill '#2b2b2b' -draw 'rectangle 2000,900 3500,1900' \
    -fill black -pointsize 28 -annotate +340+280 'Vexet: ekran resmi hızı, bir 4K ekran' \
    -fill white -pointsize 22 -annotate +2040+960 'Lorem ipsum dolor sit amet, consectetur adipiscing elit' \
    "$work/background.png"
# display sets the root window's background and exits with status 1 even when it did so.
display -window root "$work/background.png" || true
sleep 1

now_us() { echo "${EPOCHREALTIME/[.,]/}"; }

# Runs "$@" once to warm up, then $runs times; prints the median in milliseconds.
median_ms() {
    local out=$1 i start end
    shift
    local -a times=()
    "$@" >/dev/null 2>&1 || return 1
    [[ -s $out ]] || return 1
    for ((i = 0; i < runs; i++)); do
        rm -f "$out"
        start=$(now_us)
        "$@" >/dev/null 2>&1 || return 1
        end=$(now_us)
        [[ -s $out ]] || return 1
        times+=($(((end - start) / 1000)))
    done
    printf '%s\n' "${times[@]}" | sort -n | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : int((v[NR / 2] + v[NR / 2 + 1]) / 2) }'
}

xwd_pipeline() { xwd -root -silent | "$convert_bin" xwd:- "$1"; }

names=()
figures=()
sizes=()
measure() {
    local name=$1 out=$2 ms
    shift 2
    if ms=$(median_ms "$out" "$@"); then
        names+=("$name")
        figures+=("$ms")
        sizes+=("$(stat -c %s "$out")")
    else
        echo "capture-speed: $name failed; left out" >&2
    fi
}

measure "vexet-capture -D 1" "$work/ours.png" "$ours" -x -t png -D 1 "$work/ours.png"
command -v import >/dev/null &&
    measure "import -window root" "$work/import.png" import -window root "$work/import.png"
command -v xwd >/dev/null &&
    measure "xwd -root | convert" "$work/xwd.png" xwd_pipeline "$work/xwd.png"
command -v ffmpeg >/dev/null &&
    measure "ffmpeg x11grab" "$work/ffmpeg.png" ffmpeg -loglevel error -y -f x11grab -video_size "$size" \
        -i "$DISPLAY" -frames:v 1 "$work/ffmpeg.png"

if ((${#figures[@]} == 0)) || [[ ${names[0]} != "vexet-capture -D 1" ]]; then
    echo "capture-speed: vexet-capture did not capture" >&2
    exit 1
fi

echo
echo "Whole-process time for one $size monitor to PNG, median of $runs runs:"
printf '  %-22s %8s %10s %16s\n' tool ms "PNG KiB" "ours / theirs"
for i in "${!names[@]}"; do
    ratio=$(awk -v a="${figures[0]}" -v b="${figures[i]}" 'BEGIN { printf (b > 0 ? "%.3f" : "-"), a / b }')
    ((i == 0)) && ratio="-"
    printf '  %-22s %8d %10d %16s\n' "${names[i]}" "${figures[i]}" $((sizes[i] / 1024)) "$ratio"
done
