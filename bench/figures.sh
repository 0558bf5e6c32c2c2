# Helpers the benchmark scripts share; sourced, never run.

# The median of some numbers.
median() { printf '%s\n' "$@" | sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }

# a ÷ b to three places, or "-" when b is 0.
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { if (b == 0) print "-"; else printf "%.3f", a / b }'; }

# CPU seconds (user + system) of a command and its children, also of one that timeout interrupts.
cpu_of() { { /usr/bin/time -f '%U %S' "$@" 2>&1 >/dev/null || true; } | tail -n 1 | awk '{ print $1 + $2 }'; }

# Where raw 1080p pictures, which come to gigabytes, can go: memory where there is room.
scratch_dir() { if [[ -d /dev/shm ]]; then echo /dev/shm; else echo "${TMPDIR:-/tmp}"; fi; }

# The benchmarks that record moving content run again inside a 1920 × 1080 virtual desktop:
#   run_inside_desktop NAME DEFAULT_SECONDS "${1:-}" "${2:-}" TARGET…
# outside one (no --inside), checks for ffmpeg, ffprobe and gst-launch-1.0, builds the targets in
# BUILD_DIR (default: build) and runs the calling script as "--inside BUILD_DIR SECONDS" there; it
# returns only when already inside. Needs $here, the project's root.
run_inside_desktop() {
    local name=$1 seconds=${4:-$2} build tool
    [[ $3 == --inside ]] && return 0
    build=$(cd "${3:-$here/build}" && pwd)
    shift 4
    for tool in ffmpeg ffprobe gst-launch-1.0; do
        command -v "$tool" >/dev/null || { echo "$name: $tool is missing" >&2; exit 2; }
    done
    # gstvexet: the program's own GStreamer elements, for gst-launch-1.0 to run its branches.
    ninja -C "$build" gstvexet "$@" >/dev/null
    export GST_PLUGIN_PATH=$build/bench${GST_PLUGIN_PATH:+:$GST_PLUGIN_PATH}
    exec bash "$here/tests/desktop/virtual-desktop.sh" --screen 1920x1080 -- \
        bash "${BASH_SOURCE[1]}" --inside "$build" "$seconds"
}
