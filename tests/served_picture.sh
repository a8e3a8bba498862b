#!/usr/bin/env bash
# Serves a picture for a stand-in of the program. Sees a picture that other machines reach or that asks for
# no password, a result, argument or signal that does not come through, and a server or a file left behind.
set -euo pipefail
top=$(dirname "$(dirname "$(readlink -f "$0")")")
TMPDIR=$(mktemp -d)
export TMPDIR
unset DISPLAY
trap 'rm -rf "$TMPDIR"' EXIT
failures=0

expect() {
    [[ $2 == "$3" ]] && return
    echo "$1: expected '$2', found '$3'"
    failures=$((failures + 1))
}

# serve PROGRAM ARGUMENT…: a program of bash, beside a served picture.
serve() {
    exec bash -c 'set -euo pipefail; source "$0/scripts/common.sh"; source "$0/scripts/served_picture.sh"
        with_served_picture bash -c "$@"' "$top" "$@"
}

# The kinds of security that are offered, of which 2 is the password.
offered() {
    local version
    exec {line}<>"/dev/tcp/127.0.0.1/$1"
    IFS= read -r -u "$line" version
    printf '%s\n' "$version" >&"$line"
    head -c 2 <&"$line" | od -An -tu1 | xargs
    exec {line}>&-
}

# Sees whether it may draw on its display, says what it has been given, and ends with 7 when it is told to.
# shellcheck disable=SC2016 # for another shell
stand_in='trap "exit 7" TERM
    xkbcomp "$DISPLAY" - >/dev/null 2>&1 || exit 3
    read -r typed
    echo "$DISPLAY" "$0 $typed"
    read -r'

mkfifo "$TMPDIR/keyboard"
exec {keyboard}<>"$TMPDIR/keyboard"
rm "$TMPDIR/keyboard"
echo typed >&"$keyboard"
exec {said}< <(serve "$stand_in" 'two words' 2>"$TMPDIR/line" <&"$keyboard")
server=$!
read -r -t 60 -u "$said" display given
expect 'arguments and input' 'two words typed' "$given"
port=$(sed -n 's/.*localhost:\([0-9]*\), password [a-z0-9]\{8\}$/\1/p' "$TMPDIR/line")
expect 'security' '1 2' "$(offered "$port")"
everywhere=$(grep -hE ": (0{8}|0{32}):$(printf '%04X' "$port") " /proc/net/tcp /proc/net/tcp6 || true)
expect 'listening for other machines' '' "$everywhere"
expect 'folder' 'drwx------' "$(stat -c %A "$TMPDIR"/tmp.*)"
kill -TERM "$server"
code=0
wait "$server" || code=$?
expect 'the result' 7 "$code"
rm "$TMPDIR/line"
expect 'files left' '' "$(ls -A "$TMPDIR")"
expect 'display left' no "$([[ -e /tmp/.X11-unix/X${display#:} ]] && echo yes || echo no)"

((failures == 0))
