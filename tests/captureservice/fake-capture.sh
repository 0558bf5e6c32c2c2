#!/usr/bin/env bash
# Stand-in for vexet-capture in the capture service's tests: records how it was called, then
# behaves as $FAKE_CAPTURE says.
out=${!#}
{
    printf 'arg %s\n' "$@"
    echo "folder $(stat -c '%a' "$(dirname "$out")")"
    echo "umask $(umask)"
} >"$FAKE_CAPTURE_LOG"
case ${FAKE_CAPTURE:-} in
image) cp "$FAKE_CAPTURE_IMAGE" "$out" && echo "file $(stat -c '%a' "$out")" >>"$FAKE_CAPTURE_LOG" ;;
garbage) echo "not a picture" >"$out" ;;
slow) exec sleep 60 ;;
crash) kill -SEGV $$ ;;
*) exit "${FAKE_CAPTURE_STATUS:-1}" ;;
esac
