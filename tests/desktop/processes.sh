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

# Says which of the programs started so far ($pids, $names of the sourcing script) are no longer
# running, with their exit status where it can still be had; when $1 is not 0 (the command
# failed), also what each running one is doing: its state, CPU seconds and, for each of its
# threads, the kernel function it waits in. A program that crashed or stopped answering during the
# run shows up here.
report_programs() {
    local failed=$1 i pid state status stat fields wchan ticks task comm waits
    ticks=$(getconf CLK_TCK 2>/dev/null || echo 100)
    for i in "${!pids[@]}"; do
        pid=${pids[i]}
        state=$(proc_state "$pid")
        if [[ -z $state ]]; then
            say "${names[i]} (process $pid) had exited before the desktop stopped"
        elif [[ $state == Z ]]; then
            status=0
            wait "$pid" 2>/dev/null || status=$?
            ((status > 128)) && status="$status, signal $(kill -l "$((status - 128))" 2>/dev/null)"
            say "${names[i]} (process $pid) had exited before the desktop stopped: status $status"
        elif ((failed)); then
            read -r stat 2>/dev/null <"/proc/$pid/stat" || continue
            read -r -a fields <<<"${stat##*) }"
            waits=""
            for task in /proc/"$pid"/task/*; do
                read -r comm 2>/dev/null <"$task/comm" || continue
                wchan=$(tr -d '\0' 2>/dev/null <"$task/wchan")
                waits+=" $comm:$(proc_state "$pid/task/${task##*/}")/${wchan:-?}"
            done
            say "${names[i]} (process $pid): state $state, $(((fields[11] + fields[12]) / ticks)) s of CPU;" \
                "threads (name:state/kernel function waited in):$waits"
        fi
    done
}
