# Helpers the benchmark scripts share; sourced, never run.

# The median of some numbers.
median() { printf '%s\n' "$@" | sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }

# a ÷ b to three places, or "-" when b is 0.
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { if (b == 0) print "-"; else printf "%.3f", a / b }'; }

# CPU seconds (user + system) of a command and its children, also of one that timeout interrupts.
cpu_of() { { /usr/bin/time -f '%U %S' "$@" 2>&1 >/dev/null || true; } | tail -n 1 | awk '{ print $1 + $2 }'; }

# Where raw 1080p pictures, which come to gigabytes, can go: memory where there is room.
scratch_dir() { if [[ -d /dev/shm ]]; then echo /dev/shm; else echo "${TMPDIR:-/tmp}"; fi; }
