#!/usr/bin/env bash
# Compares the manual pages with the programs' own --help: every option and every exit status the
# help names is in the manual page with the same first sentence, and the page names no other.
#
#   tests/install/check-manpages.sh BUILD_DIR
set -euo pipefail
export LC_ALL=C.UTF-8
build=$1
failures=0
check() { # DESCRIPTION COMMAND...
    local description=$1
    shift
    if "$@"; then echo "ok: $description"; else echo "FAILED: $description"; failures=$((failures + 1)); fi
}
starts_with() { [[ $1 == "$2"* ]]; }

# The entries of one section of a manual page, one a line: "TAG<TAB>TEXT", roff taken out (fonts,
# escapes, the macros that set a font), the text's lines joined.
entries() { # PAGE SECTION
    awk -v section="$2" '
        function plain(line,    args, n, i, quoted, joined, alternating) {
            if (line ~ /^\.(B|I|BR|BI|IB|IR|RB|RI) /) {
                alternating = line ~ /^\.[BIR][BIR] /
                sub(/^\.[BIR]+ /, "", line)
                # Arguments are separated by spaces; a quoted one keeps its spaces.
                n = 0; joined = ""
                while (length(line) > 0) {
                    if (substr(line, 1, 1) == "\"") {
                        quoted = index(substr(line, 2), "\"")
                        args[++n] = substr(line, 2, quoted - 1)
                        line = substr(line, quoted + 2)
                    } else {
                        i = index(line, " ")
                        if (i == 0) { args[++n] = line; line = "" }
                        else { args[++n] = substr(line, 1, i - 1); line = substr(line, i) }
                    }
                    sub(/^ +/, "", line)
                }
                for (i = 1; i <= n; ++i)
                    joined = joined (i > 1 && !alternating ? " " : "") args[i]
                line = joined
            }
            gsub(/\\f[BIRP]/, "", line)
            gsub(/\\-/, "-", line)
            return line
        }
        /^\.SH / { name = substr($0, 5); gsub(/"/, "", name); inside = (name == section); next }
        !inside { next }
        /^\.TP/ { if (tag != "") print tag "\t" text; tag = ""; text = ""; wantTag = 1; next }
        /^\.(PP|RS|RE|EX|EE)/ { if (tag != "") print tag "\t" text; tag = ""; text = ""; next }
        /^\.\\"/ { next }
        wantTag { tag = plain($0); wantTag = 0; next }
        tag != "" { line = plain($0); text = (text == "" ? line : text " " line) }
        END { if (tag != "") print tag "\t" text }
    ' "$1"
}

# The lines of one block of --help, from its heading to the next empty line: "TAG<TAB>TEXT" for
# "  TAG  TEXT" lines, with the continuation lines (deeper indent) joined to the text.
help_entries() { # HELP HEADING
    awk -v heading="$2" '
        $0 == heading { inside = 1; next }
        inside && /^$/ { inside = 0 }
        !inside { next }
        /^  [^ ]/ {
            if (tag != "") print tag "\t" text
            line = substr($0, 3)
            i = index(line, "  ")
            tag = substr(line, 1, i - 1); text = substr(line, i); sub(/^ +/, "", text)
            next
        }
        /^   / { line = $0; sub(/^ +/, "", line); text = text " " line }
        END { if (tag != "") print tag "\t" text }
    ' <<<"$1"
}

# The first sentence of a text, without its full stop.
first_sentence() {
    local text=$1
    text=${text%%. *}
    echo "${text%.}"
}

compare() { # PROGRAM PAGE HELP_HEADING PAGE_SECTION WHAT
    local program=$1 page=$2 heading=$3 section=$4 what=$5 help tag text expected
    help=$(env -u DISPLAY -u WAYLAND_DISPLAY "$program" --help)
    declare -A documented=()
    while IFS=$'\t' read -r tag text; do documented[$tag]=$text; done < <(entries "$page" "$section")
    check "$(basename "$page") has a section $section" test "${#documented[@]}" -gt 0
    declare -A named=()
    while IFS=$'\t' read -r tag text; do
        [[ $tag == -* || $tag == [0-9] ]] || continue
        named[$tag]=1
        expected=$(first_sentence "$text")
        if [[ ! -v "documented[$tag]" ]]; then
            check "$(basename "$page") lists the $what '$tag'" false
            continue
        fi
        # The page begins a sentence with a capital; the help may not.
        check "$(basename "$page") says of the $what '$tag' what --help says: '$expected'" \
            starts_with "${documented[$tag]}" "${expected^}"
    done < <(help_entries "$help" "$heading")
    for tag in "${!documented[@]}"; do
        check "the $what '$tag' of $(basename "$page") is one --help names" test -n "${named[$tag]:-}"
    done
}

bin=$build/src/app
compare "$bin/vexet" "$build/doc/vexet.1" "Komutlar:" "SEÇENEKLER" option
compare "$bin/vexet" "$build/doc/vexet.1" "Çıkış durumu:" "ÇIKIŞ DURUMU" "exit status"
compare "$bin/vexet-capture" "$build/doc/vexet-capture.1" "Seçenekler:" "SEÇENEKLER" option
compare "$bin/vexet-capture" "$build/doc/vexet-capture.1" "Çıkış durumu:" "ÇIKIŞ DURUMU" "exit status"

version=$(env -u DISPLAY -u WAYLAND_DISPLAY "$bin/vexet" --version)
for page in vexet.1 vexet-capture.1; do
    check "$page names the program's version" grep -q "^\.TH .* \"$version\" " "$build/doc/$page"
    if command -v man >/dev/null; then
        # What lintian runs: groff's warnings about the page.
        warnings=$(MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$build/doc/$page" 2>&1 >/dev/null)
        check "$page formats without warnings${warnings:+: $warnings}" test -z "$warnings"
    fi
done
echo "manpages: $failures failed"
((failures == 0))
