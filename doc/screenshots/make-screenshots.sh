#!/usr/bin/env bash
# Takes the pictures software centres show of Vexet (the metainfo links editor.png, video.png and
# settings.png here): the real windows on the virtual desktop, each taken with its frame by
# vexet-capture's window mode.
#
#   doc/screenshots/make-screenshots.sh [BUILD_DIR]     (default: build)
#
# Two Vexets run side by side, each with its own settings and runtime folder: the first shows its
# settings and video windows, the second takes the screen with them on it and opens its editor,
# where a selection is dragged over the video window.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
top=$(cd "$here/../.." && pwd)
build=$(realpath "${1:-$top/build}")

if [[ -z ${VEXET_DESKTOP_DIR:-} ]]; then
    exec bash "$top/tests/desktop/virtual-desktop.sh" --screen 1600x900 -- bash "${BASH_SOURCE[0]}" "$build"
fi

vexet=$build/src/app/vexet
helper=$build/src/app/vexet-capture
work=$(mktemp -d)
pids=()
trap 'kill "${pids[@]}" 2>/dev/null; wait; rm -rf "$work"' EXIT
xsetroot -solid '#3b4a5a'

# One Vexet with its own settings (no welcome) and its own single-instance folder, started with a
# command.
start() { # NAME ARGUMENTS...
    mkdir -p "$work/$1/config/Vexet" "$work/$1/runtime"
    chmod 700 "$work/$1/runtime"
    printf '[General]\nhasWelcomed=true\n' >"$work/$1/config/Vexet/Vexet.conf"
    run "$1" "$vexet" "${@:2}" &
    pids+=($!)
}
run() { # NAME COMMAND...
    local name=$1
    shift
    XDG_CONFIG_HOME=$work/$name/config XDG_RUNTIME_DIR=$work/$name/runtime "$@"
}
window() { # TITLE: waits for the window and prints its id
    xdotool search --sync --onlyvisible --name "^$1\$" | head -n 1
}
# Takes the window with its frame: the pointer over it, then a click in vexet-capture's window mode.
take() { # TITLE FILE
    local id
    id=$(window "$1")
    eval "$(xdotool getwindowgeometry --shell "$id")"
    xdotool mousemove $((X + WIDTH / 2)) $((Y + HEIGHT / 2))
    "$helper" -x -t png -i -w -o "$here/$2" &
    local capture=$!
    xdotool search --sync --onlyvisible --classname vexet-capture >/dev/null
    xdotool click 1
    wait "$capture"
    echo "screenshots: $2 ($WIDTH × $HEIGHT)"
}

start shown --settings
settings=$(window 'Vexet — Ayarlar')
xdotool windowmove "$settings" 40 60
run shown "$vexet" --capture video
video=$(window 'Vexet — Video kaydı')
xdotool windowmove "$video" 700 160
take 'Vexet — Ayarlar' settings.png
take 'Vexet — Video kaydı' video.png

# The second Vexet's editor, on the desktop with the first one's windows, a part of it selected.
start editing
# The first Vexet holds the global shortcuts: the second one says so at its start, in an alert
# closed here before it takes the screen.
alert=
until [[ -n $alert ]]; do
    for id in $(xdotool search --onlyvisible --name '^Vexet$' || true); do
        eval "$(xdotool getwindowgeometry --shell "$id")"
        ((WIDTH < 100)) || alert=$id
    done
done
xdotool windowactivate --sync "$alert" key Return
xdotool mousemove 800 450
run editing "$vexet" --capture screen
editor=$(window 'Vexet — Önizleme ve kırpma')
xdotool windowmove "$editor" 300 100
eval "$(xdotool getwindowgeometry --shell "$editor")"
xdotool mousemove $((X + WIDTH * 45 / 100)) $((Y + HEIGHT * 28 / 100)) mousedown 1
xdotool mousemove $((X + WIDTH * 70 / 100)) $((Y + HEIGHT * 60 / 100))
xdotool mousemove $((X + WIDTH * 82 / 100)) $((Y + HEIGHT * 75 / 100)) mouseup 1
take 'Vexet — Önizleme ve kırpma' editor.png
