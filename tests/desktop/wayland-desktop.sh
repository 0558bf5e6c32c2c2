#!/usr/bin/env bash
# Runs a command inside a private, throw-away Wayland desktop and tears the desktop down afterwards.
#
#   tests/desktop/wayland-desktop.sh [--no-tray] [--tray-watcher PATH] [--screencast-backend PATH]
#                                    [--] COMMAND [ARGS...]
#   tests/desktop/wayland-desktop.sh --test-user
#
# The desktop:
#   * headless sway (software rendering, no X server: xwayland disabled) with two outputs side by
#     side: HEADLESS-1 1920x1080 at 0,0 and HEADLESS-2 1280x1024 at 1920,0, both at scale 1
#     (configuration: tests/wayland/desktop/sway.conf; the keyboard focus follows the mouse, the
#     pointer is never warped);
#   * a private D-Bus session bus;
#   * PipeWire, WirePlumber and pipewire-pulse with a virtual speaker "vexet_speaker" (default
#     sink) and a virtual microphone "vexet_mic" (default source) that hears whatever is played
#     into the sink "vexet_mic_feed", as on the X11 desktop;
#   * xdg-desktop-portal with its wlr and gtk backends; the wlr backend finds a stand-in "slurp"
#     first in its PATH, which answers the region written in $VEXET_SLURP_ANSWER ("X,Y WxH", e.g.
#     "1920,0 1280x1024") or cancels (exit 1) when that file says "cancel" or does not exist;
#   * with --screencast-backend PATH, that program instead of the packaged wlr backend, which on a
#     machine without a GPU cannot cast (tests/desktop/screencast-backend.sh builds one that can).
#     A session without a restore token asks a stand-in output chooser
#     (tests/wayland/desktop/screencast-chooser), which answers the output name written in
#     $VEXET_SCREENCAST_ANSWER (e.g. "HEADLESS-2") or declines when that file says "cancel" or does
#     not exist (SelectSources then answers 1), and appends a line "N ANSWER" to
#     $VEXET_SCREENCAST_CHOICES (created empty) each time, so that tests can count the questions.
#     A session asking for persist_mode 2 gets a restore token that brings the same output back
#     without asking. The backend sends a frame only when the output has changed since its last
#     one, and even a new cast's first frame may wait for a change (the pointer moving is enough);
#   * a StatusNotifier watcher with a registered host (vexet-tray-watcher, built with the tests),
#     unless --no-tray is given;
#   * one wayvnc per output, listening on a unix socket: each gives the seat a virtual pointer and
#     keyboard that tests drive through the VNC protocol.
#
# sway refuses to run as root. Run by root, the script creates (once) the user vexet-tests and runs
# the desktop and COMMAND as that user; it then also gives the desktop and COMMAND a mount
# namespace with a private, empty /tmp (the portal's wlr backend always writes its pictures to
# /tmp/out.png, which would collide with other desktops), so COMMAND cannot see the caller's /tmp
# (its current directory stays reachable) - unless COMMAND or the watcher names a path in /tmp.
# Run by anyone else, everything runs as the caller, with the machine's /tmp.
#
# COMMAND runs with WAYLAND_DISPLAY, SWAYSOCK, DBUS_SESSION_BUS_ADDRESS, XDG_RUNTIME_DIR (private,
# mode 0700), XDG_CURRENT_DESKTOP=sway, XDG_SESSION_TYPE=wayland, QT_QPA_PLATFORM=wayland, HOME
# (private, with Pictures and Videos folders), USER, LOGNAME, TMPDIR (private), VEXET_DESKTOP_DIR
# (the private directory of this desktop), VEXET_VNC_SOCKETS (HEADLESS-1=PATH:HEADLESS-2=PATH) and
# VEXET_SLURP_ANSWER set, and with --screencast-backend also VEXET_SCREENCAST_ANSWER and
# VEXET_SCREENCAST_CHOICES (files in the private directory; unset without it, so a test can tell
# whether the desktop casts). DISPLAY, XAUTHORITY and the variables that would tie it to the
# caller's own desktop (SESSION_MANAGER, PULSE_SERVER, Qt scaling and theme overrides, ...) are
# removed.
#
# Exit status: that of COMMAND; 128+N if this script was stopped by signal N; 125 if the desktop
# could not be started; 2 for a usage error. Whatever the outcome, every process this script
# started is stopped (by process id / process group, never by name), so is any process still
# carrying this desktop's environment, and the private directory is removed.
#
# Environment knobs:
#   VEXET_DESKTOP_TIMEOUT   seconds allowed for each start-up step (default 20)
#   VEXET_DESKTOP_LOG_DIR   if set, the logs of the desktop's programs are copied there on exit
#   VEXET_BINARY_DIR        build directory whose tests/wayland/tray/vexet-tray-watcher is used
#                           when --tray-watcher is not given

# shellcheck disable=SC2317 # functions called through traps and await are not unreachable
set -u

readonly prog=wayland-desktop
readonly test_user=vexet-tests
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
step_timeout=${VEXET_DESKTOP_TIMEOUT:-20}

say() { printf '%s: %s\n' "$prog" "$*" >&2; }

usage() {
    cat <<EOF
Usage: $0 [--no-tray] [--tray-watcher PATH] [--screencast-backend PATH] [--] COMMAND [ARGS...]
       $0 --test-user

Starts a private headless sway (two outputs, 1920x1080 and 1280x1024 side by side, no X server),
a D-Bus session bus, PipeWire with a virtual speaker and microphone, xdg-desktop-portal (wlr and
gtk backends), a StatusNotifier watcher and one wayvnc per output, runs COMMAND in it and stops
everything afterwards. Run by root, the desktop and COMMAND run as the user $test_user.

  --no-tray            start no StatusNotifier watcher: a desktop without a tray
  --tray-watcher PATH  the watcher program; by default \$VEXET_BINARY_DIR/tests/wayland/tray/vexet-tray-watcher
  --screencast-backend PATH
                       run this xdg-desktop-portal-wlr (built by tests/desktop/screencast-backend.sh)
                       instead of the packaged one, with an output chooser driven by the file
                       \$VEXET_SCREENCAST_ANSWER: the desktop then offers ScreenCast
  --test-user          print the user the desktop runs as (creating it when run by root) and exit
EOF
}

usage_error() {
    say "$*"
    usage >&2
    exit 2
}

# ---------------------------------------------------------------------------------------------
# Arguments

with_tray=1
watcher_bin=""
screencast_bin=""
print_user=0
while (($#)); do
    case $1 in
    --no-tray)
        with_tray=0
        shift
        ;;
    --tray-watcher)
        (($# >= 2)) || usage_error "--tray-watcher needs the path of vexet-tray-watcher"
        watcher_bin=$2
        shift 2
        ;;
    --tray-watcher=*)
        watcher_bin=${1#*=}
        shift
        ;;
    --screencast-backend)
        (($# >= 2)) || usage_error "--screencast-backend needs the path of an xdg-desktop-portal-wlr"
        screencast_bin=$2
        shift 2
        ;;
    --screencast-backend=*)
        screencast_bin=${1#*=}
        shift
        ;;
    --test-user)
        print_user=1
        shift
        ;;
    -h | --help)
        usage
        exit 0
        ;;
    --)
        shift
        break
        ;;
    -*) usage_error "unknown option: $1" ;;
    *) break ;;
    esac
done
[[ $step_timeout =~ ^[1-9][0-9]*$ ]] || usage_error "VEXET_DESKTOP_TIMEOUT must be a whole number of seconds"

# The user everything runs as: the caller, or the dedicated test user when the caller is root.
ensure_test_user() {
    id -u "$test_user" >/dev/null 2>&1 && return 0
    useradd --system --user-group --no-create-home --home-dir /nonexistent --shell /usr/sbin/nologin \
        --comment "Vexet tests" "$test_user" 2>/dev/null
    # A concurrent run may have created it in the meantime.
    id -u "$test_user" >/dev/null 2>&1
}

if ((print_user)); then
    if ((EUID == 0)); then
        ensure_test_user || {
            say "cannot create the user $test_user"
            exit 125
        }
        echo "$test_user"
    else
        id -un
    fi
    exit 0
fi
(($#)) || usage_error "no command given"

if ((with_tray)); then
    if [[ -z $watcher_bin ]]; then
        [[ -n ${VEXET_BINARY_DIR:-} ]] ||
            usage_error "where is vexet-tray-watcher? Give --tray-watcher PATH, set VEXET_BINARY_DIR," \
                "or use --no-tray"
        watcher_bin=$VEXET_BINARY_DIR/tests/wayland/tray/vexet-tray-watcher
    fi
    [[ $watcher_bin == /* ]] || watcher_bin=$PWD/$watcher_bin
    [[ -x $watcher_bin ]] ||
        usage_error "the tray watcher $watcher_bin is not an executable (build it, or use --no-tray)"
fi
if [[ -n $screencast_bin ]]; then
    [[ $screencast_bin == /* ]] || screencast_bin=$PWD/$screencast_bin
    [[ -f $screencast_bin && -x $screencast_bin ]] ||
        usage_error "the ScreenCast backend $screencast_bin is not an executable" \
            "(tests/desktop/screencast-backend.sh builds one)"
fi

# Run by root: a mount namespace of our own with a private /tmp. The script starts again inside it
# (same process id); the log directory is opened first, since /tmp may hide it afterwards. A
# command that names something in the caller's /tmp keeps the machine's /tmp instead.
names_tmp=0
for arg in "$watcher_bin" "$screencast_bin" "$@"; do
    [[ $arg == /tmp || $arg == /tmp/* || $arg == *=/tmp/* ]] && names_tmp=1
done
if ((EUID == 0 && names_tmp)) && [[ -z ${VEXET_WAYLAND_DESKTOP_NS:-} ]]; then
    say "the command names files in /tmp, so the desktop keeps the machine's /tmp: the Screenshot portal's" \
        "/tmp/out.png may collide with another desktop's"
fi
if ((EUID == 0 && !names_tmp)) && [[ -z ${VEXET_WAYLAND_DESKTOP_NS:-} ]] && unshare --mount true 2>/dev/null; then
    log_fd=""
    if [[ -n ${VEXET_DESKTOP_LOG_DIR:-} ]] && mkdir -p "$VEXET_DESKTOP_LOG_DIR"; then
        exec {log_fd}<"$VEXET_DESKTOP_LOG_DIR"
    fi
    # Where the script came from, so that the new one can tell that it really is elsewhere.
    VEXET_WAYLAND_DESKTOP_NS="$(readlink /proc/self/ns/mnt)/${log_fd:-none}"
    export VEXET_WAYLAND_DESKTOP_NS
    opts=()
    ((with_tray)) && opts+=(--tray-watcher "$watcher_bin") || opts+=(--no-tray)
    [[ -z $screencast_bin ]] || opts+=(--screencast-backend "$screencast_bin")
    exec unshare --mount --propagation private -- "$BASH" "${BASH_SOURCE[0]}" "${opts[@]}" -- "$@"
fi
private_tmp=0
log_target=${VEXET_DESKTOP_LOG_DIR:-}
if [[ -n ${VEXET_WAYLAND_DESKTOP_NS:-} ]]; then
    from_ns=${VEXET_WAYLAND_DESKTOP_NS%/*}
    from_fd=${VEXET_WAYLAND_DESKTOP_NS##*/}
    unset VEXET_WAYLAND_DESKTOP_NS
    if [[ $from_ns != mnt:* || $(readlink /proc/self/ns/mnt) == "$from_ns" ]]; then
        say "not in a mount namespace of its own: keeping the machine's /tmp"
    else
        [[ $from_fd == none ]] || log_target=/proc/$$/fd/$from_fd
        if mount -t tmpfs -o mode=1777,nosuid,nodev vexet-tmp /tmp; then
            private_tmp=1
        else
            say "cannot mount a private /tmp; the portal's pictures share /tmp/out.png with other desktops"
        fi
    fi
fi

# ---------------------------------------------------------------------------------------------
# Programs

readonly portal_bin=/usr/libexec/xdg-desktop-portal
readonly portal_wlr_bin=/usr/libexec/xdg-desktop-portal-wlr
readonly portal_gtk_bin=/usr/libexec/xdg-desktop-portal-gtk

missing=()
for path in "$portal_bin:xdg-desktop-portal" "$portal_wlr_bin:xdg-desktop-portal-wlr" \
    "$portal_gtk_bin:xdg-desktop-portal-gtk"; do
    [[ -x ${path%%:*} ]] || missing+=("${path%%:*} (${path#*:})")
done
for tool in sway:sway swaymsg:sway dbus-daemon:dbus-daemon dbus-send:dbus-bin pipewire:pipewire-bin \
    wireplumber:wireplumber pipewire-pulse:pipewire-pulse pactl:pulseaudio-utils pw-cli:pipewire-bin \
    wayvnc:wayvnc grim:grim jq:jq setsid:util-linux setpriv:util-linux; do
    command -v "${tool%%:*}" >/dev/null || missing+=("${tool%%:*} (${tool#*:})")
done
if ((${#missing[@]})); then
    say "missing programs: ${missing[*]}"
    exit 125
fi

as_user=()
if ((EUID == 0)); then
    ensure_test_user || {
        say "cannot create the user $test_user"
        exit 125
    }
    user_id=$(id -u "$test_user")
    group_id=$(id -g "$test_user")
    as_user=(setpriv --reuid="$user_id" --regid="$group_id" --init-groups --)
    user_name=$test_user
else
    user_id=$EUID
    user_name=$(id -un)
fi
if [[ -n $screencast_bin ]] && ! "${as_user[@]}" test -x "$screencast_bin"; then
    say "$user_name cannot run the ScreenCast backend $screencast_bin (a folder on the way closed to others?)"
    exit 125
fi

# ---------------------------------------------------------------------------------------------
# Process bookkeeping and teardown

source "$here/processes.sh"

pids=()  # process ids of the programs started here; each leads its own process group
names=() # their names, for messages
cmd_pid=""
caught=0
dir=""

# Process ids of the members of the process groups given as arguments that are not zombies.
group_members() {
    local f stat fields pgid
    local -A wanted=()
    for pgid; do wanted[$pgid]=1; done
    for f in /proc/[0-9]*/stat; do
        read -r stat 2>/dev/null <"$f" || continue
        read -r -a fields <<<"${stat##*) }"
        if [[ -n ${wanted[${fields[2]}]:-} && ${fields[0]} != Z ]]; then
            f=${f#/proc/}
            printf '%s\n' "${f%/stat}"
        fi
    done
}

# Stops the process groups of all programs started here (each led by our child): SIGTERM to all,
# newest first, then SIGKILL to whatever is left after a grace period.
stop_programs() {
    local signal deadline i left
    ((${#pids[@]})) || return 0
    for signal in TERM KILL; do
        for ((i = ${#pids[@]} - 1; i >= 0; i--)); do
            kill -s "$signal" -- "-${pids[i]}" 2>/dev/null || kill -s "$signal" "${pids[i]}" 2>/dev/null
        done
        now_ms
        deadline=$((now + 5000))
        while :; do
            for i in "${!pids[@]}"; do reap "${pids[i]}"; done
            left=$(group_members "${pids[@]}")
            [[ -n $left ]] || return 0
            now_ms
            ((now < deadline)) || break
            sleep 0.05
        done
        if [[ $signal == TERM ]]; then
            for i in "${!pids[@]}"; do
                [[ -z $(group_members "${pids[i]}") ]] ||
                    say "${names[i]} (group ${pids[i]}) ignored SIGTERM, killing it"
            done
        fi
    done
    say "could not stop processes ${left//$'\n'/ }"
}

stop_command() {
    local signal deadline grace
    # After Ctrl-C the command has usually received SIGINT from the terminal itself: give it a
    # moment to finish on its own before repeating the signal and then escalating.
    local -a plan
    if ((caught == 2)); then plan=(none:2000 INT:5000 TERM:5000 KILL:5000); else plan=(TERM:10000 KILL:5000); fi
    for step in "${plan[@]}"; do
        signal=${step%%:*}
        grace=${step#*:}
        alive "$cmd_pid" || break
        [[ $signal == none ]] || kill -s "$signal" "$cmd_pid" 2>/dev/null
        now_ms
        deadline=$((now + grace))
        while alive "$cmd_pid"; do
            now_ms
            ((now < deadline)) || break
            sleep 0.05
        done
    done
    reap "$cmd_pid"
}

# Processes that carry this desktop's environment but escaped its process groups (a program
# the command left running in a session of its own, say). Only this script's own children are
# exempt, and only while they run.
strays() {
    local f pid entries
    for f in /proc/[0-9]*/environ; do
        pid=${f#/proc/}
        pid=${pid%/environ}
        ((pid != $$)) || continue
        mapfile -d '' -t entries 2>/dev/null <"$f" || continue
        [[ " ${entries[*]} " == *" VEXET_DESKTOP_DIR=$dir "* ]] && alive "$pid" && printf '%s\n' "$pid"
    done
}

stop_strays() {
    local signal deadline left
    left=$(strays)
    [[ -n $left ]] || return 0
    say "stopping processes left behind by the command: ${left//$'\n'/ }"
    for signal in TERM KILL; do
        # shellcheck disable=SC2086 # a list of process ids
        kill -s "$signal" $left 2>/dev/null
        now_ms
        deadline=$((now + 3000))
        while [[ -n $left ]]; do
            now_ms
            ((now < deadline)) || break
            sleep 0.05
            left=$(strays)
        done
        [[ -n $left ]] || return 0
    done
    say "could not stop processes ${left//$'\n'/ }"
}

# Mounts under the private directory, deepest first (xdg-document-portal's FUSE file system).
private_mounts() {
    local point
    while read -r _ _ _ _ point _; do
        point=$(printf '%b' "${point//\\/\\0}") # mountinfo escapes blanks as \040
        [[ $point == "$dir"/* ]] && printf '%s\n' "$point"
    done </proc/self/mountinfo | sort -r
}

unmount_private() {
    local point
    while read -r point; do
        [[ -n $point ]] || continue
        if ((EUID == 0)); then
            umount -l "$point" 2>/dev/null
        else
            fusermount3 -u -z "$point" 2>/dev/null || fusermount -u -z "$point" 2>/dev/null
        fi || say "cannot unmount $point"
    done < <(private_mounts)
}

cleanup() {
    local status=$?
    trap '' INT TERM HUP
    if [[ -n $cmd_pid ]] && alive "$cmd_pid"; then
        caught=15
        stop_command
    fi
    report_programs "$status"
    stop_programs
    if [[ -n $dir ]]; then
        stop_strays
        unmount_private
        if [[ -n $log_target ]]; then
            mkdir -p "$log_target" && cp -f "$dir"/logs/* "$log_target"/ 2>/dev/null
        fi
        rm -rf "$dir"
    fi
    exit "$status"
}

on_signal() {
    caught=$1
    # Before the command runs, a signal simply aborts the start-up; while it runs, the main
    # loop stops the command and then exits.
    [[ -n $cmd_pid ]] || exit $((128 + caught))
}

trap cleanup EXIT
trap 'on_signal 2' INT
trap 'on_signal 15' TERM
trap 'on_signal 1' HUP

# Starts "$@" as the desktop's user in the background, in a process group and session of its
# own, so that the terminal's signals do not reach it and it can be stopped as a whole; its
# working directory is the private home. $1 is the name, $2 the log file.
start() {
    local name=$1 log=$2
    shift 2
    (cd "$HOME" && exec setsid "${as_user[@]}" "$@") </dev/null >>"$log" 2>&1 &
    started=$!
    pids+=("$started")
    names+=("$name")
}

# Runs "$@" as the desktop's user (quick queries such as swaymsg and dbus-send).
user_run() { "${as_user[@]}" "$@"; }

# ---------------------------------------------------------------------------------------------
# Private directory and environment

# Unix socket paths are limited to about 100 bytes, so fall back to /tmp for a long or unusual
# TMPDIR.
tmp_base=${TMPDIR:-/tmp}
if ((private_tmp)) || ((${#tmp_base} > 40)) || [[ $tmp_base =~ [[:space:]\"\'\\] ]] || [[ ! -d $tmp_base ]]; then
    tmp_base=/tmp
fi
dir=$(mktemp -d "$tmp_base/vexet-wayland.XXXXXX") || {
    say "cannot create a private directory in $tmp_base"
    exit 125
}
mkdir -p "$dir/logs" "$dir/runtime" "$dir/tmp" "$dir/home/Pictures" "$dir/home/Videos" "$dir/home/.config"
cat >"$dir/home/.config/user-dirs.dirs" <<'DIRS'
XDG_PICTURES_DIR="$HOME/Pictures"
XDG_VIDEOS_DIR="$HOME/Videos"
DIRS
((EUID == 0)) && chown -R "$user_id:$group_id" "$dir"
chmod 700 "$dir" "$dir/runtime" "$dir/tmp"

# Nothing started here may reach the caller's own desktop.
unset DISPLAY XAUTHORITY WAYLAND_DISPLAY WAYLAND_SOCKET SWAYSOCK I3SOCK SESSION_MANAGER \
    DBUS_SESSION_BUS_ADDRESS DBUS_SYSTEM_BUS_ADDRESS PULSE_SERVER PULSE_SINK PULSE_SOURCE PULSE_COOKIE \
    PULSE_CLIENTCONFIG PULSE_RUNTIME_PATH PIPEWIRE_REMOTE PIPEWIRE_RUNTIME_DIR XDG_SESSION_DESKTOP \
    XDG_SESSION_ID XDG_SESSION_CLASS XDG_SEAT XDG_VTNR XDG_CONFIG_HOME XDG_DATA_HOME XDG_CACHE_HOME \
    XDG_STATE_HOME DESKTOP_SESSION KDE_FULL_SESSION KDE_SESSION_VERSION GNOME_DESKTOP_SESSION_ID \
    QT_QPA_PLATFORMTHEME QT_STYLE_OVERRIDE QT_SCALE_FACTOR QT_SCREEN_SCALE_FACTORS \
    QT_AUTO_SCREEN_SCALE_FACTOR QT_ENABLE_HIGHDPI_SCALING QT_FONT_DPI QT_WAYLAND_SHELL_INTEGRATION \
    QT_WAYLAND_DISABLE_WINDOWDECORATION QT_WAYLAND_FORCE_DPI GDK_SCALE GDK_DPI_SCALE GDK_BACKEND \
    WLR_BACKENDS WLR_RENDERER WLR_HEADLESS_OUTPUTS WLR_LIBINPUT_NO_DEVICES WLR_NO_HARDWARE_CURSORS
export HOME=$dir/home
export USER=$user_name LOGNAME=$user_name
export TMPDIR=$dir/tmp
export XDG_RUNTIME_DIR=$dir/runtime
export XDG_CURRENT_DESKTOP=sway
export XDG_SESSION_TYPE=wayland
export QT_QPA_PLATFORM=wayland
export VEXET_DESKTOP_DIR=$dir
export VEXET_SLURP_ANSWER=$dir/slurp-answer
if [[ -n $screencast_bin ]]; then
    export VEXET_SCREENCAST_ANSWER=$dir/screencast-answer
    export VEXET_SCREENCAST_CHOICES=$dir/screencast-choices
    : >"$VEXET_SCREENCAST_CHOICES"
    ((EUID == 0)) && chown "$user_id:$group_id" "$VEXET_SCREENCAST_CHOICES"
fi

# portal-wlr writes its pictures to this fixed path. One left behind by an earlier desktop of ours
# (a test stopped before it removed the picture) goes; another user's makes grim fail there.
portal_picture=/tmp/out.png
if [[ -e $portal_picture ]]; then
    if [[ $(stat -c %u "$portal_picture" 2>/dev/null) == "$user_id" ]]; then
        rm -f "$portal_picture"
    else
        say "$portal_picture belongs to another user: the Screenshot portal will fail on this desktop"
    fi
fi

now_ms
started_at=$now

# ---------------------------------------------------------------------------------------------
# Compositor

sway_log=$dir/logs/sway.log
start sway "$sway_log" env WLR_BACKENDS=headless WLR_HEADLESS_OUTPUTS=1 WLR_LIBINPUT_NO_DEVICES=1 \
    WLR_RENDERER=pixman sway --config "$here/../wayland/desktop/sway.conf"
sway_pid=$started
export SWAYSOCK=$XDG_RUNTIME_DIR/sway-ipc.$user_id.$sway_pid.sock
sway_ok() {
    local socket
    for socket in "$XDG_RUNTIME_DIR"/wayland-[0-9]*; do
        [[ -S $socket ]] && WAYLAND_DISPLAY=${socket##*/} && break
    done
    [[ -n ${WAYLAND_DISPLAY:-} && -S $SWAYSOCK ]] && user_run swaymsg -t get_version >/dev/null 2>&1
}
await "starting the compositor (sway)" "$sway_pid" "$sway_log" sway_ok
export WAYLAND_DISPLAY

# The first output comes with the headless backend, the second is added here; the configuration
# places both.
user_run swaymsg create_output >>"$sway_log" 2>&1 || fail "sway could not add a second output" "$sway_log"
expected_outputs=$'HEADLESS-1 1920x1080+0+0 scale 1\nHEADLESS-2 1280x1024+1920+0 scale 1'
actual_outputs=""
outputs_ok() {
    actual_outputs=$(user_run swaymsg -r -t get_outputs 2>>"$sway_log" |
        jq -r '.[] | select(.active)
            | "\(.name) \(.rect.width)x\(.rect.height)+\(.rect.x)+\(.rect.y) scale \(.scale)"' |
        sort)
    [[ $actual_outputs == "$expected_outputs" ]]
}
if ! outputs_ok; then
    await "arranging the outputs (wanted ${expected_outputs//$'\n'/, }, got ${actual_outputs//$'\n'/, })" \
        "$sway_pid" "$sway_log" outputs_ok
fi

# ---------------------------------------------------------------------------------------------
# D-Bus session bus (after the compositor, so that the services it starts find it)

bus_address=unix:path=$XDG_RUNTIME_DIR/bus
dbus_log=$dir/logs/dbus-daemon.log
start dbus-daemon "$dbus_log" dbus-daemon --session --nofork --nopidfile --address="$bus_address"
export DBUS_SESSION_BUS_ADDRESS=$bus_address
bus_call() {
    user_run dbus-send --session --dest=org.freedesktop.DBus --type=method_call --print-reply \
        /org/freedesktop/DBus "org.freedesktop.DBus.$1" "${@:2}" 2>/dev/null
}
bus_ok() { bus_call GetId >/dev/null; }
await "starting the D-Bus session bus" "$started" "$dbus_log" bus_ok
name_owned() { [[ $(bus_call NameHasOwner "string:$1") == *"boolean true"* ]]; }

# ---------------------------------------------------------------------------------------------
# PipeWire

pipewire_log=$dir/logs/pipewire.log
start pipewire "$pipewire_log" pipewire
pipewire_ok() { user_run pw-cli info 0 >/dev/null 2>&1; }
await "starting PipeWire" "$started" "$pipewire_log" pipewire_ok
wireplumber_log=$dir/logs/wireplumber.log
start wireplumber "$wireplumber_log" wireplumber
wireplumber_pid=$started
pulse_log=$dir/logs/pipewire-pulse.log
start pipewire-pulse "$pulse_log" pipewire-pulse
pulse_pid=$started

# ---------------------------------------------------------------------------------------------
# Portal backends, tray watcher, VNC servers: started together, awaited one by one

portal_wlr_log=$dir/logs/xdg-desktop-portal-wlr.log
mkdir -p "$dir/bin"
ln -s "$here/../wayland/desktop/slurp" "$dir/bin/slurp"
if [[ -z $screencast_bin ]]; then
    start xdg-desktop-portal-wlr "$portal_wlr_log" env PATH="$dir/bin:$PATH" "$portal_wlr_bin" --loglevel=WARN
else
    # The chooser runs through "sh -c", so its path goes in as a word without blanks or quotes: the
    # private directory's. No max_fps: the cast follows the output's refresh and whatever rate the
    # client asks for. The backend gives a restore token for an output a chooser picked only when
    # XDPW_PERSIST_MODE allows it (it stands in for a "remember" box the chooser would show). Its
    # log has each session's steps (DEBUG; each frame's would be TRACE), to tell where it stopped.
    ln -s "$here/../wayland/desktop/screencast-chooser" "$dir/bin/screencast-chooser"
    cat >"$dir/portal-wlr.conf" <<CONF
[screencast]
chooser_type=simple
chooser_cmd=$dir/bin/screencast-chooser
CONF
    start xdg-desktop-portal-wlr "$portal_wlr_log" env PATH="$dir/bin:$PATH" XDPW_PERSIST_MODE=permanent \
        "$screencast_bin" --loglevel=DEBUG --config="$dir/portal-wlr.conf"
fi
portal_wlr_pid=$started
portal_gtk_log=$dir/logs/xdg-desktop-portal-gtk.log
start xdg-desktop-portal-gtk "$portal_gtk_log" env GDK_BACKEND=wayland NO_AT_BRIDGE=1 "$portal_gtk_bin" --replace
portal_gtk_pid=$started
if ((with_tray)); then
    watcher_log=$dir/logs/vexet-tray-watcher.log
    start vexet-tray-watcher "$watcher_log" "$watcher_bin"
    watcher_pid=$started
fi
vnc_sockets=""
vnc_pids=()
for output in HEADLESS-1 HEADLESS-2; do
    socket=$XDG_RUNTIME_DIR/vnc-$output.sock
    start "wayvnc $output" "$dir/logs/wayvnc-$output.log" wayvnc --output="$output" --unix-socket "$socket"
    vnc_pids+=("$started")
    vnc_sockets+="${vnc_sockets:+:}$output=$socket"
done
export VEXET_VNC_SOCKETS=$vnc_sockets

# Each wayvnc gives the seat a virtual pointer and a virtual keyboard.
vnc_ok() {
    local i=0 output socket devices
    for output in HEADLESS-1 HEADLESS-2; do
        socket=$XDG_RUNTIME_DIR/vnc-$output.sock
        if [[ ! -S $socket ]]; then
            alive "${vnc_pids[i]}" || fail "wayvnc on $output exited" "$dir/logs/wayvnc-$output.log"
            return 1
        fi
        ((++i))
    done
    devices=$(user_run swaymsg -r -t get_inputs 2>/dev/null |
        jq -r '[.[] | select(.type == "pointer" or .type == "keyboard") | .type] | sort | join(" ")')
    [[ $devices == "keyboard keyboard pointer pointer" ]]
}
await "starting the VNC servers (wayvnc)" "" "" vnc_ok
await "starting the wlr portal backend" "$portal_wlr_pid" "$portal_wlr_log" \
    name_owned org.freedesktop.impl.portal.desktop.wlr
await "starting the gtk portal backend" "$portal_gtk_pid" "$portal_gtk_log" \
    name_owned org.freedesktop.impl.portal.desktop.gtk
if ((with_tray)); then
    await "starting the tray watcher" "$watcher_pid" "$watcher_log" name_owned org.kde.StatusNotifierWatcher
fi

# ---------------------------------------------------------------------------------------------
# Portal frontend, last: started by D-Bus activation before the backends were there, it would
# offer fewer portals.

portal_log=$dir/logs/xdg-desktop-portal.log
start xdg-desktop-portal "$portal_log" "$portal_bin" --replace
portal_ok() {
    user_run dbus-send --session --dest=org.freedesktop.portal.Desktop --type=method_call --print-reply \
        /org/freedesktop/portal/desktop org.freedesktop.DBus.Introspectable.Introspect 2>/dev/null |
        grep -q '<interface name="org.freedesktop.portal.Screenshot">'
}
await "starting xdg-desktop-portal" "$started" "$portal_log" portal_ok

# ---------------------------------------------------------------------------------------------
# Sound devices, as on the X11 desktop

pulse_ok() { user_run pactl info >/dev/null 2>&1; }
await "starting pipewire-pulse" "$pulse_pid" "$pulse_log" pulse_ok
{
    user_run pactl load-module module-null-sink sink_name=vexet_speaker \
        sink_properties=device.description=Vexet_Speaker &&
        user_run pactl load-module module-null-sink sink_name=vexet_mic_feed \
            sink_properties=device.description=Vexet_Microphone_Feed &&
        user_run pactl load-module module-remap-source master=vexet_mic_feed.monitor source_name=vexet_mic \
            source_properties=device.description=Vexet_Microphone &&
        user_run pactl set-default-sink vexet_speaker && user_run pactl set-default-source vexet_mic
} >>"$pulse_log" 2>&1 || fail "pipewire-pulse: cannot create the virtual speaker and microphone" "$pulse_log"
sound_ok() {
    local info
    info=$(user_run pactl info 2>/dev/null)
    grep -q -x 'Default Sink: vexet_speaker' <<<"$info" && grep -q -x 'Default Source: vexet_mic' <<<"$info"
}
await "choosing the virtual speaker and microphone" "$wireplumber_pid" "$wireplumber_log" sound_ok

# ---------------------------------------------------------------------------------------------
# The command

now_ms
say "wayland desktop $WAYLAND_DISPLAY (HEADLESS-1 1920x1080+0+0, HEADLESS-2 1280x1024+1920+0$(
    ((with_tray)) || printf ', no tray'
)), ready in $(((now - started_at) / 1000)).$(printf '%02d' $(((now - started_at) % 1000 / 10))) s"

# Asynchronous commands of a script start with SIGINT and SIGQUIT ignored; give the command the
# default dispositions back so that Ctrl-C reaches it, and keep its standard input.
run=()
env --default-signal=INT true >/dev/null 2>&1 && run=(env '--default-signal=INT,QUIT' --)
"${as_user[@]}" "${run[@]}" "$@" <&0 &
cmd_pid=$!
wait "$cmd_pid"
status=$?
if ((caught)); then
    stop_command
    exit $((128 + caught))
fi
cmd_pid=""
exit "$status"
