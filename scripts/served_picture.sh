# shellcheck shell=bash
# For a machine without a display: runs a program on an X server whose picture is served over VNC, to
# this machine only and with a password of this run. Sourced by ./run, behind common.sh.

served=   # folder of the password and the cookies; nobody else may look into it
x_server= # process
program=  # process

# Whether something on this machine listens on a TCP port.
port_taken() {
    grep -qsE "^ *[0-9]+: [0-9A-F]+:$(printf '%04X' "$1") [0-9A-F]+:0000 0A" /proc/net/tcp /proc/net/tcp6
}

# random_characters COUNT: none that is mistaken for another.
random_characters() {
    head -c 4096 /dev/urandom | LC_ALL=C tr -dc 'a-km-np-z2-9' | cut -c "1-$1"
}

# allow_display NAME COOKIE: through a pipe, as everybody can read a command line.
allow_display() {
    xauth -q -f "$served/cookies" source - <<<"add $1 . $2"
}

# start_x_server PORT: sets DISPLAY. Ctrl+C does not reach a session of its own, and should this script be
# killed outright, the server does not outlive it.
start_x_server() {
    rm -f "$served/display"
    mkfifo "$served/display"
    setsid setpriv --pdeathsig TERM Xvnc -displayfd 3 -auth "$served/cookies" -noreset \
        -rfbport "$1" -localhost -SecurityTypes VncAuth -PasswordFile "$served/password" \
        -geometry 1400x940 -depth 24 -AcceptSetDesktopSize=0 -AlwaysShared -desktop ampdesk \
        3>"$served/display" >"$served/log" 2>&1 </dev/null &
    x_server=$!
    DISPLAY=:
    read -r DISPLAY <"$served/display" && DISPLAY=:$DISPLAY
}

stop_x_server() {
    [[ -n $x_server ]] || return 0
    kill "$x_server" 2>/dev/null || true
    wait "$x_server" 2>/dev/null || true
    x_server=
}

# Message boxes lie over the main window and want the keyboard. No button makes an icon: there is nothing
# to bring it back with. Comes back when the manager is at work.
start_window_manager() {
    local ready
    sed 's/NLIMC/NLMC/' /etc/xdg/openbox/rc.xml >"$served/openbox.xml"
    exec {ready}< <(exec setsid openbox --config-file "$served/openbox.xml" --startup echo 2>/dev/null </dev/null)
    read -r -t 10 -u "$ready" || say "There is no window manager on $DISPLAY"
}

serve_picture() {
    local port=5900 tries=0 password cookie
    password=$(random_characters 8)
    cookie=$(od -An -N16 -tx1 /dev/urandom | tr -d ' \n')
    : >"$served/cookies"
    vncpasswd -f <<<"$password" >"$served/password"
    allow_display :0 "$cookie" # the server takes every cookie of the file
    while
        while port_taken "$port"; do port=$((port + 1)); done
        ! start_x_server "$port"
    do
        stop_x_server
        if ((++tries == 5)); then
            cat "$served/log" >&2
            return 1
        fi
    done
    allow_display "$DISPLAY" "$cookie"
    # A bus that would be started for this display alone would stay behind.
    export DISPLAY XAUTHORITY=$served/cookies DBUS_SESSION_BUS_ADDRESS=${DBUS_SESSION_BUS_ADDRESS-disabled:}
    start_window_manager
    say "No display: look at it with \`ssh -L $port:localhost:$port $HOSTNAME\` and a VNC viewer at" \
        "localhost:$port, password $password"
}

hand_on() {
    [[ -n $program ]] || exit 1
    interrupted=yes
    kill "-$1" "$program" 2>/dev/null || true
}

# with_served_picture COMMAND…: ends this script as the command ends, which gets the signals that come.
with_served_picture() {
    local signal interrupted=yes code=0
    served=$(mktemp -d)
    trap 'stop_x_server; rm -rf "$served"' EXIT
    for signal in INT TERM HUP; do
        # shellcheck disable=SC2064 # the signal of now
        trap "hand_on $signal" "$signal"
    done
    serve_picture
    "$@" <&0 & # bash looks at a signal only when what runs in the foreground has ended
    program=$!
    while [[ -n $interrupted ]]; do
        interrupted=
        code=0
        wait "$program" || code=$?
    done
    exit "$code"
}
