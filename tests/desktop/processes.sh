# Process helpers shared by the test desktops (virtual-desktop.sh, wayland-desktop.sh), which
# source this file. They use the sourcing script's say() and $step_timeout.

now_ms() { now=$((${EPOCHREALTIME/[.,]/} / 1000)); }

# Prints the state letter of a process (R, S, Z, ...), nothing if it does not exist.
proc_state() {
    local stat
    read -r stat 2>/dev/null <"/proc/$1/stat" || return 0
    stat=${stat##*) }
    printf '%s' "${stat%% *}"
}

alive() {
    local s
    s=$(proc_state "$1")
    [[ -n $s && $s != Z ]]
}

# Collects our exited child $1. Only a zombie is waited for: bash 5.2 may forget a child that
# it has already collected and then, asked to wait for it, waits for all remaining children.
reap() {
    [[ $(proc_state "$1") == Z ]] && wait "$1" 2>/dev/null
    return 0
}

fail() {
    local log=${2:-}
    say "$1"
    if [[ -n $log && -s $log ]]; then
        say "last lines of $(basename "$log"):"
        tail -n 25 "$log" | sed 's/^/    /' >&2
    fi
    exit 125
}

# Polls "$@" until it succeeds; fails after the step timeout or as soon as process $2 is gone.
# $1 describes what is awaited, $2 is the process id to watch (or ""), $3 its log.
await() {
    local what=$1 pid=$2 log=$3 deadline
    shift 3
    now_ms
    deadline=$((now + step_timeout * 1000))
    until "$@"; do
        if [[ -n $pid ]] && ! alive "$pid"; then
            fail "$what: the program exited" "$log"
        fi
        now_ms
        ((now < deadline)) || fail "$what: no answer within $step_timeout s" "$log"
        sleep 0.05
    done
}
