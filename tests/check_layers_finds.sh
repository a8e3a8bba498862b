#!/usr/bin/env bash
# Proves that check_layers.sh sees a breach: each case puts one line into a small source tree.
set -euo pipefail
check=$(dirname "$(readlink -f "$0")")/check_layers.sh
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
failed=false

# expect clean|breach FILE LINE
expect() {
    local found=clean
    mkdir -p "$tree/$(dirname "$2")"
    echo "$3" >"$tree/$2"
    bash "$check" "$tree" >/dev/null || found=breach
    rm "$tree/$2"
    [[ $found == "$1" ]] && return
    echo "$2 with '$3': expected $1, found $found"
    failed=true
}

while read -r what file line; do
    expect "$what" "$file" "$line"
done <<'EOF'
clean buslink/a.cpp #include "platform/clock.h"
clean demo/a.cpp #include "buslink/wire/crc16.h"
clean shell/main.cpp #include <QtWidgets/QApplication>
clean platform/posix/a.cpp #include <sys/stat.h>
clean tests/platform/a.cpp #include <unistd.h>
clean tests/platform/a.cpp #include "platform/posix/termios_port.h"
clean fuzz/a.h #include <sys/mman.h>
clean platform/a.cpp #include <cerrno>
clean terminal/ui/a.cpp #include <QWidget>
clean terminal/ui/a.cpp #include "platform/qt/qt_operator.h"
clean tests/windows/a.cpp #include "a.moc"
breach amplifier/a.cpp #include "controlhead/head.h"
breach terminal/a.cpp #include "amplifier/readings.h"
breach platform/a.h #include "buslink/bus_link.h"
breach controlhead/a.cpp #include "terminal/terminal.h"
breach station/a.cpp #include "shell/configuration.h"
breach buslink/a.cpp #include "amplifier/readings.h"
breach tools/a.cpp #  include "controlhead/head.h"
breach demo/a.cpp #include "buslink/bus_link.h"
breach shell/a.cpp #include "tests/support/manual_clock.h"
breach controlhead/a.cpp #include "head.h"
breach controlhead/a.cpp #include <QString>
breach controlhead/a.cpp #include <QtCore/QString>
breach controlhead/a.cpp #include <qstring.h>
breach shell/a.cpp #include "shell/ui/main_window.h"
breach shell/main.cpp #include "platform/posix/termios_port.h"
breach platform/a.cpp #include <unistd.h>
breach shell/main.cpp #include <csignal>
breach tests/shell/a.cpp #include <QTest>
EOF
expect clean buslink/a.cpp "$(printf '//\n%.0s' {1..600})"
expect breach buslink/a.cpp "$(printf '//\n%.0s' {1..601})"

! $failed
