#!/usr/bin/env bash
# Builds the ScreenCast backend of the Wayland test desktop: xdg-desktop-portal-wlr from Debian's
# own source package of the installed version, changed so that it casts through shared memory
# when the compositor offers no DMA-BUF format, plus two fixes found on the way (below).
#
#   tests/desktop/screencast-backend.sh OUT_DIR
#
# Result: OUT_DIR/xdg-desktop-portal-wlr, for tests/desktop/wayland-desktop.sh --screencast-backend.
#
# Why: the packaged backend (0.7.0) refuses to start a cast unless the compositor offers a DMA-BUF
# format as well as a shared-memory one, and wlroots' software renderer - all a machine without a
# GPU has - offers none: Start answers 2 and the log says "unable to receive a valid format from
# wlr_screencopy". The backend copes with shared memory alone once that check lets it through.
#
# The sources come through apt-get alone, from the machine's own apt sources turned into deb-src
# entries in a private sources list with private index and cache folders: the machine's indexes
# and caches are neither used nor changed, and none of it needs root (run by root, downloads go
# through apt's _apt sandbox as usual). Build dependencies (Debian): dpkg-dev patch meson
# ninja-build pkg-config libdrm-dev libinih-dev libgbm-dev libpipewire-0.3-dev libwayland-dev
# wayland-protocols libsystemd-dev.
#
# Nothing happens when OUT_DIR already holds a binary built by this very script from the installed
# version (a stamp file beside it records both). Exit status 0 when the binary is there, 1 when it
# could not be built, 2 for a usage error.
# Environment: JOBS (parallel compile jobs; default: the number of processors).
set -euo pipefail

readonly prog=screencast-backend
readonly package=xdg-desktop-portal-wlr

say() { printf '%s: %s\n' "$prog" "$*" >&2; }
die() {
    say "$*"
    exit 1
}

if (($# != 1)) || [[ -z $1 || $1 == -* ]]; then
    echo "usage: $0 OUT_DIR" >&2
    exit 2
fi
out_dir=$1
[[ $out_dir == /* ]] || out_dir=$PWD/$out_dir
binary=$out_dir/$package
stamp=$binary.stamp

# The source package and version behind the installed binary package (a binary-only rebuild has a
# version of its own, "+bN"; its source is what apt-get fetches).
installed=$(dpkg-query -W -f='${db:Status-Status} ${source:Package} ${source:Version}' "$package" 2>/dev/null) ||
    true
read -r status source_package source_version <<<"$installed"
[[ ${status:-} == installed && -n ${source_version:-} ]] ||
    die "$package is not installed: its source package is the one to rebuild (apt-get install $package)"

script_sum=$(sha256sum <"${BASH_SOURCE[0]}")
wanted="$source_package $source_version ${script_sum%% *}"
if [[ -x $binary && -f $stamp && $(<"$stamp") == "$wanted" ]]; then
    say "$binary is up to date ($source_package $source_version)"
    exit 0
fi

for tool in apt-get apt-config dpkg-source patch meson ninja; do
    command -v "$tool" >/dev/null || die "$tool is missing (Debian: the build dependencies listed in $0)"
done

say "building $binary from Debian's $source_package $source_version, changed to cast through shared memory"
mkdir -p "$out_dir"
work=$(mktemp -d "$out_dir/.build.XXXXXX")
trap 'rm -rf "$work"' EXIT
log=$work/log

# Runs "$@" with its output in the log; on failure shows the log's tail and stops.
logged() {
    local what=$1
    shift
    if ! "$@" >>"$log" 2>&1; then
        say "$what failed; last lines of its output:"
        tail -n 25 "$log" | sed 's/^/    /' >&2
        exit 1
    fi
}

# ---------------------------------------------------------------------------------------------
# A private sources list: every enabled "deb" entry of the machine's own apt sources as "deb-src",
# in both formats apt reads (one-line .list files and deb822 .sources files).

main_list="" parts_dir=""
eval "$(apt-config shell main_list Dir::Etc::sourcelist/f parts_dir Dir::Etc::sourceparts/d)"
mkdir "$work/sources"
one_line=$work/sources/deb-src.list
deb822=$work/sources/deb-src.sources
: >"$one_line"
: >"$deb822"

# One-line format: "deb [options] URI SUITE [COMPONENT...]"; apt takes a # anywhere as the start
# of a comment. Existing deb-src lines are left out: the deb line beside them gives the same.
convert_list() {
    local line
    while IFS= read -r line || [[ -n $line ]]; do
        line=${line%%#*}
        [[ $line =~ ^[[:space:]]*deb[[:space:]]+(.*[^[:space:]]) ]] || continue
        printf 'deb-src %s\n' "${BASH_REMATCH[1]}" >>"$one_line"
    done <"$1"
}

# deb822 format: stanzas apart by blank lines, "Field: value" lines with continuation lines that
# start with a blank (an inline Signed-By key, for one). A stanza with "Enabled: no" or without
# the type deb is left out; the others are copied with "Types: deb-src".
convert_sources() {
    local line stanza="" has_deb=0 enabled=1
    flush() {
        ((has_deb && enabled)) && printf '%s\n' "$stanza" >>"$deb822"
        stanza=""
        has_deb=0
        enabled=1
    }
    shopt -s nocasematch
    while IFS= read -r line || [[ -n $line ]]; do
        if [[ $line =~ ^[[:space:]]*$ ]]; then
            flush
            continue
        fi
        [[ $line == '#'* ]] && continue
        if [[ $line =~ ^types:(.*)$ ]]; then
            [[ " ${BASH_REMATCH[1]} " =~ [[:space:]]deb[[:space:]] ]] && has_deb=1
            line="Types: deb-src"
        elif [[ $line =~ ^enabled:[[:space:]]*(no|false|off|0|disable)[[:space:]]*$ ]]; then
            enabled=0
        fi
        stanza+=$line$'\n'
    done <"$1"
    flush
    shopt -u nocasematch
}

[[ -f $main_list ]] && convert_list "$main_list"
# apt reads only the files of the parts folder whose names end in .list or .sources.
for file in "$parts_dir"*.list; do [[ -f $file ]] && convert_list "$file"; done
for file in "$parts_dir"*.sources; do [[ -f $file ]] && convert_sources "$file"; done
[[ -s $one_line || -s $deb822 ]] || die "no enabled deb entry in apt's sources ($main_list, $parts_dir)"

mkdir -p "$work/lists/partial" "$work/cache/archives/partial" "$work/download"
apt_private=(
    -o "Dir::Etc::SourceList=$work/sources/none"
    -o "Dir::Etc::SourceParts=$work/sources"
    -o "Dir::State::Lists=$work/lists"
    -o "Dir::Cache=$work/cache"
)
# Run by root, apt downloads as its sandbox user, which must get to the index folder (apt hands it
# lists/partial itself) and write the sources' folder; where it cannot (a folder above OUT_DIR
# closed to others), apt warns and downloads as root.
if ((EUID == 0)) && id -u _apt >/dev/null 2>&1; then
    chmod 0755 "$work"
    chown _apt "$work/download"
fi

# An entry whose index cannot be had (a third-party archive without sources, say) makes update
# fail as a whole; what the other entries brought may still hold the package, which the next
# step finds out.
if ! apt-get -q "${apt_private[@]}" update >>"$log" 2>&1; then
    say "apt-get update reported errors (see below); trying with the indexes it got"
    grep -E '^(E|W):' "$log" | sed 's/^/    /' >&2 || true
fi
(
    cd "$work/download"
    logged "apt-get source $source_package=$source_version" \
        apt-get -q "${apt_private[@]}" source --download-only "$source_package=$source_version"
)
dsc=("$work/download"/*.dsc)
[[ -f ${dsc[0]} ]] || die "apt-get source brought no .dsc file"
# apt has checked the files against the archive's signed indexes; dpkg-source checks their sums.
logged "unpacking ${dsc[0]##*/}" dpkg-source -x "${dsc[0]}" "$work/tree"

# ---------------------------------------------------------------------------------------------
# The changes, in src/screencast/screencast.c and src/core/main.c:
#  * xdpw_screencast_instance_destroy frees the cast's target after its stream, not before:
#    destroying a stream that a client still reads ends its "streaming" state, whose handler
#    queues one last buffer and reads the freed target for it. The backend crashed that way
#    whenever a session was closed while its stream was still being read;
#  * start_screencast requires only a shared-memory format;
#  * Start stops at the session it looks for. Without the break, the loop runs past the end and
#    the persist mode put in Start's answer is read from the list head as if it were a session: a
#    stray number, so the restore data went out whatever the mode (and would not, were that number
#    0). With it the answer carries the session's own mode;
#  * the main loop no longer waits in wl_display_dispatch for Wayland events that a D-Bus handler
#    of the same round has already read. When one wake-up brought both, and the D-Bus messages
#    held a Start (whose handler reads the compositor's answers itself), wl_display_dispatch found
#    nothing left and waited for the next event; with no frame asked for yet - the new cast waits
#    for PipeWire's "streaming", which that loop never got to read - none came, and the backend
#    answered nothing more. Now it reads only what is there.
# patch fails, and so does this script, when the lines are not there exactly (another version of
# the backend).

if ! patch -d "$work/tree" -p1 --forward --batch --fuzz=0 --no-backup-if-mismatch >"$work/patch.log" 2>&1 <<'PATCH'; then
--- a/src/screencast/screencast.c
+++ b/src/screencast/screencast.c
@@ -92,9 +92,9 @@
 		}
 	}
 
-	free(cast->target);
 	wl_list_remove(&cast->link);
 	xdpw_pwr_stream_destroy(cast);
+	free(cast->target);
 	assert(wl_list_length(&cast->buffer_list) == 0);
 	free(cast);
 }
@@ -196,9 +196,7 @@
 	wl_display_dispatch(cast->ctx->state->wl_display);
 	wl_display_roundtrip(cast->ctx->state->wl_display);
 
-	if (cast->screencopy_frame_info[WL_SHM].format == DRM_FORMAT_INVALID ||
-			(cast->ctx->state->screencast_version >= 3 &&
-			 cast->screencopy_frame_info[DMABUF].format == DRM_FORMAT_INVALID)) {
+	if (cast->screencopy_frame_info[WL_SHM].format == DRM_FORMAT_INVALID) {
 		logprint(INFO, "wlroots: unable to receive a valid format from wlr_screencopy");
 		return -1;
 	}
@@ -549,6 +547,7 @@
 		if (strcmp(sess->session_handle, session_handle) == 0) {
 				logprint(DEBUG, "dbus: start: found matching session %s", sess->session_handle);
 				cast = sess->screencast_data.screencast_instance;
+				break;
 		}
 	}
 	if (!cast) {
--- a/src/core/main.c
+++ b/src/core/main.c
@@ -228,7 +228,20 @@
 
 		if (pollfds[EVENT_LOOP_WAYLAND].revents & POLLIN) {
 			logprint(TRACE, "event-loop: got wayland event");
-			ret = wl_display_dispatch(state.wl_display);
+			// The D-Bus handlers above may have read these events already (Start does a
+			// roundtrip): wl_display_dispatch would then wait for more, which may never come.
+			ret = 0;
+			if (wl_display_prepare_read(state.wl_display) == 0) {
+				struct pollfd wayland = { .fd = pollfds[EVENT_LOOP_WAYLAND].fd, .events = POLLIN };
+				if (poll(&wayland, 1, 0) > 0) {
+					ret = wl_display_read_events(state.wl_display);
+				} else {
+					wl_display_cancel_read(state.wl_display);
+				}
+			}
+			if (ret >= 0) {
+				ret = wl_display_dispatch_pending(state.wl_display);
+			}
 			if (ret < 0) {
 				logprint(ERROR, "wl_display_dispatch failed: %s", strerror(errno));
 				goto error;
PATCH
    say "the sources of $source_package $source_version are not what this script" \
        "expects; the changes need redoing for this version:"
    sed 's/^/    /' "$work/patch.log" >&2
    exit 1
fi

# ---------------------------------------------------------------------------------------------
# Build: no manual page and no systemd unit (only the binary is used).

jobs=${JOBS:-$(nproc)}
logged "meson setup (missing build dependencies? see $0)" \
    meson setup "$work/tree/build" "$work/tree" --buildtype=release \
    -Dsd-bus-provider=libsystemd -Dman-pages=disabled -Dsystemd=disabled
logged "compiling" ninja -C "$work/tree/build" -j "$jobs"

# The stamp goes first and comes back last, so that an interrupted copy is never taken as done.
# Mode 0755 whatever the umask: the desktop runs the binary as its test user when root runs it.
rm -f "$stamp"
install -m 0755 "$work/tree/build/$package" "$binary.new"
mv -f "$binary.new" "$binary"
printf '%s\n' "$wanted" >"$stamp"
say "built $binary"
