#!/usr/bin/env bash
# Proves that check_layers.sh sees a breach: each case puts one line into a small source tree.
set -euo pipefail
check=$(dirname "$(readlink -f "$0")")/check_layers.sh
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
failures=0

# expect clean|breach FILE LINE
expect() {
    local found=clean
    mkdir -p "$tree/$(dirname "$2")"
    printf '%s\n' "$3" >"$tree/$2"
    bash "$check" "$tree" >/dev/null || found=breach
    rm "$tree/$2"
    if [[ $found != "$1" ]]; then
        echo "$2 with '$3': expected $1, found $found"
        failures=$((failures + 1))
    fi
}

expect clean buslink/a.cpp '#include "platform/clock.h"'
expect clean demo/a.cpp '#include "buslink/wire/crc16.h"'
expect clean shell/main.cpp '#include <QtWidgets/QApplication>'
expect clean platform/posix/a.cpp '#include <sys/stat.h>'
expect clean tests/platform/a.cpp '#include <unistd.h>'
expect clean tests/platform/a.cpp '#include "platform/posix/termios_port.h"'
expect clean fuzz/a.h '#include <sys/mman.h>'
expect clean bench/a.cpp '#include <csignal>'
expect clean platform/a.cpp '#include <cerrno>'
expect clean terminal/ui/a.cpp '#include <QWidget>'
expect clean terminal/ui/a.cpp '#include "platform/qt/qt_operator.h"'
expect clean tests/windows/a.cpp '#include <QTest>'
expect clean tests/windows/a.cpp '#include "a.moc"'
expect clean controlhead/a.cpp '#include "amplifier/readings.h"'
expect breach amplifier/a.cpp '#include "controlhead/head.h"'
expect breach terminal/a.cpp '#include "amplifier/readings.h"'
expect breach platform/a.h '#include "buslink/bus_link.h"'
expect breach buslink/a.cpp '#include "controlhead/head.h"'
expect breach controlhead/a.cpp '#include "terminal/terminal.h"'
expect clean station/a.cpp '#include "controlhead/control_head.h"'
expect breach controlhead/a.cpp '#include "station/station.h"'
expect breach station/a.cpp '#include "shell/ui/MDIForm1.h"'
expect breach tools/a.cpp '  #  include "controlhead/head.h"'
expect breach terminal/a.cpp '#include "shell/station.h"'
expect breach demo/a.cpp '#include "buslink/bus_link.h"'
expect breach demo/a.cpp '#include "controlhead/head.h"'
expect breach shell/a.cpp '#include "tests/support/manual_clock.h"'
expect breach controlhead/a.cpp '#include "head.h"'
expect breach controlhead/a.cpp '#include <QString>'
expect breach controlhead/a.cpp '#include <QtCore/QString>'
expect breach controlhead/a.cpp '#include <qstring.h>'
expect breach shell/a.cpp '#include "shell/ui/main_window.h"'
expect breach shell/a.cpp '#include "platform/posix/termios_port.h"'
expect breach shell/main.cpp '#include "platform/posix/termios_port.h"'
expect breach platform/a.h '#include "platform/posix/descriptor.h"'
expect breach platform/a.cpp '#include <unistd.h>'
expect breach platform/qt/a.cpp '#include <sys/stat.h>'
expect breach demo/a.cpp '# include <poll.h>'
expect breach shell/ui/a.cpp '#include <linux/serial.h>'
expect breach shell/main.cpp '#include <csignal>'
expect breach docs/ui/a.cpp '#include <fcntl.h>'
expect breach tests/shell/a.cpp '#include <QTest>'
expect clean buslink/a.cpp "$(printf '//\n%.0s' {1..600})"
expect breach buslink/a.cpp "$(printf '//\n%.0s' {1..601})"

((failures == 0))
