#!/usr/bin/env bash
# Runs a command inside a private, throw-away desktop and tears the desktop down afterwards.
#
#   tests/desktop/virtual-desktop.sh [--screen WxH] [--] COMMAND [ARGS...]
#
# The desktop, started on a free display number:
#   * a real X server (Xorg with the dummy video driver, no real input devices, no VT switch)
#     with two monitors side by side: DUMMY0 1920x1080+0+0 (primary) and DUMMY1 1280x1024+1920+0,
#     root window 3200x1080; with --screen WxH a single monitor DUMMY0 of that size instead;
#   * a private D-Bus session bus;
#   * openbox as window manager (configuration: openbox-rc.xml next to this script);
#   * trayer as system tray (owner of _NET_SYSTEM_TRAY_S0), top right of the primary monitor;
#   * a private PulseAudio with a virtual speaker "vexet_speaker" (default sink) and a virtual
#     microphone "vexet_mic" (default source, a real source, not a monitor); whatever is played
#     into the sink "vexet_mic_feed" is what the microphone hears.
#
# COMMAND runs with DISPLAY, XAUTHORITY, DBUS_SESSION_BUS_ADDRESS, PULSE_SERVER,
# PULSE_CLIENTCONFIG, XDG_RUNTIME_DIR (private, mode 0700), QT_QPA_PLATFORM=xcb and
# VEXET_DESKTOP_DIR (the private directory of this desktop) set; HOME is left alone. Variables
# that would tie it to the caller's own desktop (WAYLAND_DISPLAY, SESSION_MANAGER,
# XDG_CURRENT_DESKTOP, Qt scaling and theme overrides, ...) are removed.
#
# Exit status: that of COMMAND; 128+N if this script was stopped by signal N; 125 if the desktop
# could not be started; 2 for a usage error. Whatever the outcome, every process this script
# started is stopped (by process id / process group, never by name) and the private directory
# is removed.
#
# Environment knobs:
#   VEXET_DESKTOP_TIMEOUT   seconds allowed for each start-up step (default 20)
#   VEXET_DESKTOP_LOG_DIR   if set, the logs of the desktop's programs are copied there on exit

# shellcheck disable=SC2317 # functions called through traps and await are not unreachable
set -u

readonly prog=virtual-desktop
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
step_timeout=${VEXET_DESKTOP_TIMEOUT:-20}

say() { printf '%s: %s\n' "$prog" "$*" >&2; }

usage() {
    cat <<EOF
Usage: $0 [--screen WxH] [--] COMMAND [ARGS...]

Starts a private X server (two monitors, 1920x1080 and 1280x1024 side by side, or one WxH
monitor with --screen), a D-Bus session bus, openbox, trayer and PulseAudio with a virtual
speaker and microphone, runs COMMAND in it and stops everything afterwards.
EOF
}

usage_error() {
    say "$*"
    usage >&2
    exit 2
}

# ---------------------------------------------------------------------------------------------
# Arguments

screen=""
while (($#)); do
    case $1 in
    --screen)
        (($# >= 2)) || usage_error "--screen needs a size such as 3840x2160"
        screen=$2
        shift 2
        ;;
    --screen=*)
        screen=${1#*=}
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
(($#)) || usage_error "no command given"
[[ $step_timeout =~ ^[1-9][0-9]*$ ]] || usage_error "VEXET_DESKTOP_TIMEOUT must be a whole number of seconds"

# The monitors: width, height, x, y of each; output i is DUMMYi.
readonly max_size=8192 # the Virtual size in the X server configuration
if [[ -n $screen ]]; then
    [[ $screen =~ ^([0-9]+)x([0-9]+)$ ]] || usage_error "--screen wants WxH, e.g. 3840x2160, not '$screen'"
    mon_w=($((10#${BASH_REMATCH[1]})))
    mon_h=($((10#${BASH_REMATCH[2]})))
    mon_x=(0)
    mon_y=(0)
else
    mon_w=(1920 1280)
    mon_h=(1080 1024)
    mon_x=(0 1920)
    mon_y=(0 0)
fi
fb_w=0
fb_h=0
for i in "${!mon_w[@]}"; do
    ((mon_w[i] >= 64 && mon_h[i] >= 64)) || usage_error "a monitor must be at least 64x64"
    ((mon_x[i] + mon_w[i] > fb_w)) && fb_w=$((mon_x[i] + mon_w[i]))
    ((mon_y[i] + mon_h[i] > fb_h)) && fb_h=$((mon_y[i] + mon_h[i]))
done
((fb_w <= max_size && fb_h <= max_size)) || usage_error "the desktop may be at most ${max_size}x${max_size}"

# ---------------------------------------------------------------------------------------------
# Programs

xorg_bin=/usr/lib/xorg/Xorg # the server itself, not Debian's wrapper that may refuse non-console users
[[ -x $xorg_bin ]] || xorg_bin=$(command -v Xorg || true)

missing=()
[[ -n $xorg_bin ]] || missing+=("Xorg (xserver-xorg-core)")
[[ -e /usr/lib/xorg/modules/drivers/dummy_drv.so ]] || missing+=("dummy video driver (xserver-xorg-video-dummy)")
for tool in xrandr:x11-xserver-utils xdpyinfo:x11-utils xprop:x11-utils xwininfo:x11-utils openbox:openbox \
    trayer:trayer dbus-daemon:dbus-daemon dbus-send:dbus-bin pulseaudio:pulseaudio \
    pactl:pulseaudio-utils setsid:util-linux; do
    command -v "${tool%%:*}" >/dev/null || missing+=("${tool%%:*} (${tool#*:})")
done
if ((${#missing[@]})); then
    say "missing programs: ${missing[*]}"
    exit 125
fi

# ---------------------------------------------------------------------------------------------
# Process bookkeeping and teardown

source "$here/processes.sh"

pids=()  # process ids of the programs started here; each leads its own process group
names=() # their names, for messages
cmd_pid=""
caught=0
display_num=""
dir=""

# True if process group $1 still has a member that is not a zombie.
group_alive() {
    local f stat fields
    for f in /proc/[0-9]*/stat; do
        read -r stat 2>/dev/null <"$f" || continue
        read -r -a fields <<<"${stat##*) }"
        [[ ${fields[2]} == "$1" && ${fields[0]} != Z ]] && return 0
    done
    return 1
}

# Stops process group $1 (led by our child $1): SIGTERM, then SIGKILL after a grace period.
stop_group() {
    local pid=$1 name=$2 deadline signal
    for signal in TERM KILL; do
        kill -s "$signal" -- "-$pid" 2>/dev/null || kill -s "$signal" "$pid" 2>/dev/null
        now_ms
        deadline=$((now + 5000))
        while :; do
            reap "$pid"
            if ! alive "$pid" && ! group_alive "$pid"; then
                return 0
            fi
            now_ms
            ((now < deadline)) || break
            sleep 0.05
        done
        [[ $signal == TERM ]] && say "$name (pid $pid) ignored SIGTERM, killing it"
    done
    say "$name (pid $pid) could not be stopped"
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

cleanup() {
    local status=$? i lock
    trap '' INT TERM HUP
    if [[ -n $cmd_pid ]] && alive "$cmd_pid"; then
        caught=15
        stop_command
    fi
    report_programs "$status"
    for ((i = ${#pids[@]} - 1; i >= 0; i--)); do
        stop_group "${pids[i]}" "${names[i]}"
        if [[ ${names[i]} == Xorg && -n $display_num ]]; then
            # A server that had to be killed leaves its lock and socket behind.
            lock=/tmp/.X$display_num-lock
            if [[ -f $lock ]] && [[ $(tr -d ' \n' <"$lock" 2>/dev/null) == "${pids[i]}" ]]; then
                rm -f "$lock" "/tmp/.X11-unix/X$display_num"
            fi
        fi
    done
    if [[ -n $dir && -n ${VEXET_DESKTOP_LOG_DIR:-} ]]; then
        mkdir -p "$VEXET_DESKTOP_LOG_DIR" && cp -f "$dir"/logs/* "$VEXET_DESKTOP_LOG_DIR"/ 2>/dev/null
    fi
    [[ -z $dir ]] || rm -rf "$dir"
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

# Starts "$@" in the background in a process group and session of its own, so that the
# terminal's signals do not reach it and it can be stopped as a whole.
# $1 is the name, $2 the log file.
start() {
    local name=$1 log=$2
    shift 2
    setsid "$@" </dev/null >>"$log" 2>&1 &
    started=$!
    pids+=("$started")
    names+=("$name")
}

# Forgets the last started program after it has ended by itself.
forget_last() {
    reap "${pids[-1]}"
    unset 'pids[-1]' 'names[-1]'
}

# ---------------------------------------------------------------------------------------------
# Private directory and environment

# Unix socket paths are limited to about 100 bytes and PulseAudio module arguments dislike
# blanks and quotes, so fall back to /tmp for a long or unusual TMPDIR.
tmp_base=${TMPDIR:-/tmp}
if ((${#tmp_base} > 40)) || [[ $tmp_base =~ [[:space:]\"\'\\] ]] || [[ ! -d $tmp_base ]]; then
    tmp_base=/tmp
fi
dir=$(mktemp -d "$tmp_base/vexet-desktop.XXXXXX") || {
    say "cannot create a private directory in $tmp_base"
    exit 125
}
chmod 700 "$dir"
mkdir -p "$dir/logs" "$dir/xorg/conf.d" "$dir/runtime" "$dir/dbus" "$dir/pulse/home"
chmod 700 "$dir/runtime"

# Nothing started here may reach the caller's own desktop.
unset DISPLAY XAUTHORITY WAYLAND_DISPLAY SESSION_MANAGER DBUS_SESSION_BUS_ADDRESS \
    PULSE_SERVER PULSE_SINK PULSE_SOURCE PULSE_COOKIE PULSE_CLIENTCONFIG PULSE_RUNTIME_PATH \
    XDG_CURRENT_DESKTOP XDG_SESSION_DESKTOP DESKTOP_SESSION KDE_FULL_SESSION KDE_SESSION_VERSION \
    GNOME_DESKTOP_SESSION_ID QT_QPA_PLATFORMTHEME QT_STYLE_OVERRIDE QT_SCALE_FACTOR \
    QT_SCREEN_SCALE_FACTORS QT_AUTO_SCREEN_SCALE_FACTOR QT_ENABLE_HIGHDPI_SCALING \
    QT_FONT_DPI GDK_SCALE GDK_DPI_SCALE GDK_BACKEND
export XDG_RUNTIME_DIR=$dir/runtime
export XDG_SESSION_TYPE=x11
export QT_QPA_PLATFORM=xcb
export VEXET_DESKTOP_DIR=$dir

now_ms
started_at=$now

# ---------------------------------------------------------------------------------------------
# X server

write_xorg_conf() {
    cat >"$dir/xorg/xorg.conf" <<EOF
# Generated by virtual-desktop.sh: a screen-less X server with the dummy video driver.
Section "ServerFlags"
    Option "AutoAddDevices" "false"
    Option "AutoEnableDevices" "false"
    Option "AutoAddGPU" "false"
    Option "AutoBindGPU" "false"
    Option "DontVTSwitch" "true"
    Option "DontZap" "true"
    Option "BlankTime" "0"
    Option "StandbyTime" "0"
    Option "SuspendTime" "0"
    Option "OffTime" "0"
EndSection

# Inert core devices (fed only through their private sockets, which nothing uses), so that
# the server never falls back to opening the machine's own mouse or keyboard. Tests drive
# input through XTEST.
Section "InputDevice"
    Identifier "vexet-keyboard"
    Driver "inputtest"
    Option "DeviceType" "Keyboard"
    Option "SocketPath" "$dir/xorg/keyboard"
EndSection

Section "InputDevice"
    Identifier "vexet-pointer"
    Driver "inputtest"
    Option "DeviceType" "Pointer"
    Option "SocketPath" "$dir/xorg/pointer"
EndSection

Section "Device"
    Identifier "vexet-video"
    Driver "dummy"
    VideoRam $((max_size * max_size * 4 / 1024))
EndSection

Section "Monitor"
    Identifier "vexet-monitor"
    HorizSync 5.0 - 1000.0
    VertRefresh 5.0 - 200.0
EndSection

Section "Screen"
    Identifier "vexet-screen"
    Device "vexet-video"
    Monitor "vexet-monitor"
    DefaultDepth 24
    SubSection "Display"
        Depth 24
        Virtual $max_size $max_size
    EndSubSection
EndSection

Section "ServerLayout"
    Identifier "vexet-layout"
    Screen "vexet-screen"
    InputDevice "vexet-keyboard" "CoreKeyboard"
    InputDevice "vexet-pointer" "CorePointer"
EndSection
EOF
}

display_free() {
    [[ ! -e /tmp/.X$1-lock && ! -e /tmp/.X11-unix/X$1 ]]
}

# Our server is up once it holds the lock of its display number (so that no other server can
# answer there) and accepts a connection.
xorg_ready() {
    local lock=/tmp/.X$display_num-lock
    [[ -f $lock && $(tr -d ' \n' <"$lock" 2>/dev/null) == "$xorg_pid" ]] &&
        xdpyinfo -display ":$display_num" >/dev/null 2>&1
}

write_xorg_conf
# A directory of its own instead of /etc/X11/xorg.conf.d (which may hold the machine's input and
# GPU settings); the server only accepts it with a file inside.
echo "# Intentionally empty." >"$dir/xorg/conf.d/00-none.conf"
use_xauth=0
if command -v xauth >/dev/null; then
    use_xauth=1
    export XAUTHORITY=$dir/Xauthority
    : >"$XAUTHORITY"
    cookie=$(od -An -N16 -tx1 /dev/urandom | tr -d ' \n')
fi

xorg_log=$dir/logs/Xorg.log
xorg_err=$dir/logs/Xorg.stderr
candidate=$((90 + RANDOM % 100))
for attempt in 1 2 3 4 5 6 7 8 9 10; do
    while ! display_free "$candidate"; do
        ((++candidate < 1000)) || fail "no free display number below 1000"
    done
    display_num=$candidate
    xorg_args=(":$display_num" -noreset -nolisten tcp -novtswitch -sharevts
        -config "$dir/xorg/xorg.conf" -configdir "$dir/xorg/conf.d" -logfile "$xorg_log")
    if ((use_xauth)); then
        xauth -q -f "$XAUTHORITY" add ":$display_num" . "$cookie" ||
            fail "xauth could not write $XAUTHORITY"
        xorg_args+=(-auth "$XAUTHORITY")
    fi
    start Xorg "$xorg_err" "$xorg_bin" "${xorg_args[@]}"
    xorg_pid=$started
    now_ms
    deadline=$((now + step_timeout * 1000))
    until xorg_ready; do
        alive "$xorg_pid" || break
        now_ms
        if ((now >= deadline)); then
            say "xdpyinfo -display :$display_num says: $(xdpyinfo -display ":$display_num" 2>&1 >/dev/null)"
            fail "Xorg did not start within $step_timeout s" "$xorg_log"
        fi
        sleep 0.05
    done
    xorg_ready && break
    # The server died. If another server grabbed the display number in the meantime, take the
    # next number; otherwise give up.
    forget_last
    if grep -q -E 'already active for display|server already running|Could not create lock file' \
        "$xorg_err" "$xorg_log" 2>/dev/null; then
        say "display :$display_num was taken meanwhile, trying another one"
        mv -f "$xorg_err" "$xorg_err.$attempt" 2>/dev/null
        mv -f "$xorg_log" "$xorg_log.$attempt" 2>/dev/null
        ((++candidate))
        display_num=""
        continue
    fi
    cat "$xorg_err" >>"$xorg_log" 2>/dev/null
    fail "Xorg failed to start" "$xorg_log"
done
if [[ -z $display_num ]] || ! xorg_ready; then
    fail "Xorg could not find a free display number"
fi
export DISPLAY=:$display_num
((use_xauth)) || unset XAUTHORITY

# ---------------------------------------------------------------------------------------------
# Monitors

xrandr_log=$dir/logs/xrandr.log

# Defines mode $1 of $2 x $3 pixels at 60 Hz with reduced blanking (the dummy driver only cares
# about the size, but clients see a plausible refresh rate).
new_mode() {
    local name=$1 w=$2 h=$3 ht vb vt clock
    ht=$((w + 160))
    vb=$(((h * 2838 + 99999) / 100000)) # about 460 µs of vertical blanking
    ((vb < 14)) && vb=14
    vt=$((h + vb))
    clock=$((ht * vt * 60 / 10000)) # in 10 kHz units
    xrandr --newmode "$name" "$((clock / 100)).$(printf '%02d' $((clock % 100)))" \
        "$w" $((w + 48)) $((w + 80)) "$ht" "$h" $((h + 3)) $((h + 8)) "$vt" +hsync -vsync \
        2>>"$xrandr_log"
}

mapfile -t outputs < <(xrandr 2>>"$xrandr_log" | awk '/^DUMMY[0-9]+ /{print $1}')
((${#outputs[@]} >= ${#mon_w[@]})) ||
    fail "the X server has ${#outputs[@]} dummy outputs, ${#mon_w[@]} are needed" "$xorg_log"

layout=(--fb "${fb_w}x${fb_h}" --dpi 96)
declare -A defined_modes=()
for i in "${!mon_w[@]}"; do
    mode=vexet_${mon_w[i]}x${mon_h[i]}
    if [[ -z ${defined_modes[$mode]:-} ]]; then
        new_mode "$mode" "${mon_w[i]}" "${mon_h[i]}" || fail "xrandr could not define mode $mode" "$xrandr_log"
        defined_modes[$mode]=1
    fi
    xrandr --addmode "DUMMY$i" "$mode" 2>>"$xrandr_log" ||
        fail "xrandr could not add mode $mode to DUMMY$i" "$xrandr_log"
    layout+=(--output "DUMMY$i" --mode "$mode" --pos "${mon_x[i]}x${mon_y[i]}" --rotate normal)
    ((i == 0)) && layout+=(--primary)
done
for ((i = ${#mon_w[@]}; i < ${#outputs[@]}; i++)); do
    layout+=(--output "${outputs[i]}" --off)
done
xrandr "${layout[@]}" 2>>"$xrandr_log" || fail "xrandr could not arrange the monitors" "$xrandr_log"

expected_monitors=$(for i in "${!mon_w[@]}"; do
    echo "DUMMY$i ${mon_w[i]}x${mon_h[i]}+${mon_x[i]}+${mon_y[i]}"
done | sort)
actual_monitors=$(xrandr --listmonitors 2>>"$xrandr_log" |
    sed -n -E 's|^ *[0-9]+: [+*]*([^ ]+) ([0-9]+)/[0-9]+x([0-9]+)/[0-9]+([+-][0-9]+)([+-][0-9]+).*|\1 \2x\3\4\5|p' |
    sort)
if [[ $actual_monitors != "$expected_monitors" ]]; then
    fail "the monitors are not as requested: wanted [${expected_monitors//$'\n'/, }]," \
        "got [${actual_monitors//$'\n'/, }]"
fi
xdpyinfo_out=$(xdpyinfo 2>&1)
root_size=$(awk '/dimensions:/{print $2; exit}' <<<"$xdpyinfo_out")
[[ $root_size == "${fb_w}x${fb_h}" ]] ||
    fail "the root window is $root_size instead of ${fb_w}x${fb_h}"
grep -q -w MIT-SHM <<<"$xdpyinfo_out" || fail "the X server does not offer the MIT-SHM extension"

# A fixed logical DPI, whatever the caller's own settings.
if command -v xrdb >/dev/null; then
    printf 'Xft.dpi: 96\n' | xrdb -nocpp -merge 2>>"$xrandr_log"
fi

# ---------------------------------------------------------------------------------------------
# D-Bus session bus

bus_address=unix:path=$dir/dbus/bus
dbus_log=$dir/logs/dbus-daemon.log
start dbus-daemon "$dbus_log" dbus-daemon --session --nofork --nopidfile --address="$bus_address"
bus_ok() {
    dbus-send --bus="$bus_address" --dest=org.freedesktop.DBus --type=method_call --print-reply \
        /org/freedesktop/DBus org.freedesktop.DBus.GetId >/dev/null 2>&1
}
await "starting the D-Bus session bus" "$started" "$dbus_log" bus_ok
export DBUS_SESSION_BUS_ADDRESS=$bus_address

# ---------------------------------------------------------------------------------------------
# Window manager

openbox_log=$dir/logs/openbox.log
start openbox "$openbox_log" openbox --sm-disable --config-file "$here/openbox-rc.xml"
# The window manager is there once the root window names a check window that names itself.
wm_ok() {
    local out win
    out=$(xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null) || return 1
    win=${out##*# }
    [[ $win == 0x* ]] || return 1
    out=$(xprop -id "$win" _NET_SUPPORTING_WM_CHECK 2>/dev/null) || return 1
    [[ ${out##*# } == "$win" ]]
}
await "starting the window manager (openbox)" "$started" "$openbox_log" wm_ok

# ---------------------------------------------------------------------------------------------
# System tray

trayer_log=$dir/logs/trayer.log
start trayer "$trayer_log" env NO_AT_BRIDGE=1 trayer --edge top --align right --widthtype request \
    --height 24 --transparent false --tint 0x303030 --SetDockType true --SetPartialStrut true \
    --monitor primary
# The tray is there once somebody owns the selection _NET_SYSTEM_TRAY_S0 (what Qt checks too).
tray_owner_script='
import ctypes, sys
try:
    x = ctypes.CDLL("libX11.so.6")
    x.XOpenDisplay.restype = ctypes.c_void_p
    x.XOpenDisplay.argtypes = [ctypes.c_char_p]
    x.XInternAtom.restype = ctypes.c_ulong
    x.XInternAtom.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int]
    x.XGetSelectionOwner.restype = ctypes.c_ulong
    x.XGetSelectionOwner.argtypes = [ctypes.c_void_p, ctypes.c_ulong]
    d = x.XOpenDisplay(None)
    owner = x.XGetSelectionOwner(d, x.XInternAtom(d, b"_NET_SYSTEM_TRAY_S0", 0)) if d else 0
except Exception:
    sys.exit(3)
sys.exit(0 if owner else 1)
'
tray_ok() { python3 -c "$tray_owner_script" 2>/dev/null; }
if ! command -v python3 >/dev/null || { tray_ok; (($? > 1)); }; then
    # Without python3 or libX11 the best sign is the tray's window.
    tray_ok() { xwininfo -root -tree 2>/dev/null | grep -q -F '("trayer" "Trayer")'; }
fi
await "starting the system tray (trayer)" "$started" "$trayer_log" tray_ok

# ---------------------------------------------------------------------------------------------
# PulseAudio

pulse_dir=$dir/pulse
pulse_log=$dir/logs/pulseaudio.log
mkdir -p "$pulse_dir/runtime" "$pulse_dir/state"
chmod 700 "$pulse_dir/runtime"
cat >"$pulse_dir/client.conf" <<EOF
autospawn = no
cookie-file = $pulse_dir/cookie
EOF
start pulseaudio "$pulse_log" env HOME="$pulse_dir/home" XDG_CONFIG_HOME="$pulse_dir/home/.config" \
    XDG_CACHE_HOME="$pulse_dir/home/.cache" XDG_DATA_HOME="$pulse_dir/home/.local/share" \
    PULSE_RUNTIME_PATH="$pulse_dir/runtime" PULSE_STATE_PATH="$pulse_dir/state" \
    pulseaudio --daemonize=no --system=no --exit-idle-time=-1 --disallow-exit --use-pid-file=no \
    --realtime=no --high-priority=no --log-target=stderr -n \
    --load="module-native-protocol-unix socket=$pulse_dir/native auth-anonymous=1" \
    --load="module-null-sink sink_name=vexet_speaker sink_properties=device.description=Vexet_Speaker" \
    --load="module-null-sink sink_name=vexet_mic_feed sink_properties=device.description=Vexet_Microphone_Feed" \
    --load="module-remap-source master=vexet_mic_feed.monitor source_name=vexet_mic source_properties=device.description=Vexet_Microphone"
pulse_pid=$started
export PULSE_SERVER=unix:$pulse_dir/native
export PULSE_CLIENTCONFIG=$pulse_dir/client.conf
pulse_ok() { pactl info >/dev/null 2>&1; }
await "starting PulseAudio" "$pulse_pid" "$pulse_log" pulse_ok
if ! pactl set-default-sink vexet_speaker >>"$pulse_log" 2>&1 ||
    ! pactl set-default-source vexet_mic >>"$pulse_log" 2>&1; then
    fail "PulseAudio: cannot choose the default devices" "$pulse_log"
fi
pulse_info=$(pactl info 2>&1)
if ! grep -q -x 'Default Sink: vexet_speaker' <<<"$pulse_info" ||
    ! grep -q -x 'Default Source: vexet_mic' <<<"$pulse_info"; then
    fail "PulseAudio: the virtual speaker and microphone are not the defaults" "$pulse_log"
fi

# ---------------------------------------------------------------------------------------------
# The command

geometry=""
for i in "${!mon_w[@]}"; do
    geometry+="${geometry:+, }${mon_w[i]}x${mon_h[i]}+${mon_x[i]}+${mon_y[i]}"
done
now_ms
say "virtual desktop on $DISPLAY ($geometry), ready in $(((now - started_at) / 1000)).$(printf '%02d' $(((now - started_at) % 1000 / 10))) s"

# Asynchronous commands of a script start with SIGINT and SIGQUIT ignored; give the command the
# default dispositions back so that Ctrl-C reaches it, and keep its standard input.
run=()
env --default-signal=INT true >/dev/null 2>&1 && run=(env '--default-signal=INT,QUIT' --)
"${run[@]}" "$@" <&0 &
cmd_pid=$!
wait "$cmd_pid"
status=$?
if ((caught)); then
    stop_command
    exit $((128 + caught))
fi
cmd_pid=""
exit "$status"
