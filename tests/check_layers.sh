#!/usr/bin/env bash
# Holds the folder rule of CONTRIBUTING.md: who may include whom, where Qt and the operating system
# may be seen, how long a file may be. check_layers.sh [TOP FOLDER] prints each breach and fails when there is one.
set -euo pipefail
cd "${1:-$(dirname "$0")/..}"

folders=(platform buslink amplifier controlhead terminal tools station demo shell tests bench fuzz docs)
existing=()
for folder in "${folders[@]}"; do
    [[ -d $folder ]] && existing+=("$folder")
done

# shellcheck disable=SC2016 # the dollars are awk's
find "${existing[@]}" -type f \( -name '*.cpp' -o -name '*.h' \) -print0 | sort -z |
    xargs -0 -r awk '
    # What a folder may include, as beginnings of the included name.
    BEGIN {
        split("platform/", one); allow("platform", one)
        split("buslink/ platform/", two); allow("buslink", two)
        split("amplifier/ buslink/ platform/", three); allow("amplifier", three)
        split("controlhead/ amplifier/ buslink/ platform/", panel); allow("controlhead", panel)
        split("terminal/ buslink/ platform/", four); allow("terminal", four)
        split("tools/ amplifier/ buslink/ platform/", five); allow("tools", five)
        split("station/ controlhead/ terminal/ tools/ amplifier/ buslink/ platform/", desk); allow("station", desk)
        split("demo/ buslink/wire/ platform/", six); allow("demo", six)
        all = "shell/ station/ amplifier/ controlhead/ terminal/ tools/ demo/ buslink/ platform/"
        split(all, seven); allow("shell", seven)
        split(all " tests/", eight); allow("tests", eight)
        split(all " tests/support/ bench/", nine); allow("bench", nine)
        split(all " tests/support/ fuzz/", ten); allow("fuzz", ten)
        split(all " tests/support/", eleven); allow("docs", eleven)
    }
    function allow(folder, names,    i) {
        for (i in names) allowed[folder, names[i]] = 1
    }
    function may_include(folder, name,    key, part) {
        for (key in allowed) {
            split(key, part, SUBSEP)
            if (part[1] == folder && index(name, part[2]) == 1) return 1
        }
        return 0
    }
    function breach(text) {
        printf "%s:%d: %s\n", FILENAME, FNR, text
        breaches++
    }
    FNR == 1 {
        folder = FILENAME
        sub(/\/.*/, "", folder)
        on_qt = FILENAME ~ /^[a-z]+\/ui\// || FILENAME ~ /^platform\/qt\// ||
                FILENAME ~ /^tests\/windows\// || FILENAME == "shell/main.cpp"
        on_system = FILENAME ~ /^platform\/posix\// || folder == "tests" || folder == "bench" || folder == "fuzz"
    }
    FNR == 601 { breach("more than 600 lines") }
    /^[ \t]*#[ \t]*include[ \t]*</ {
        name = $0
        sub(/^[^<]*</, "", name)
        sub(/>.*/, "", name)
        if (!on_qt && name ~ /^(Q[A-Z]|Qt[A-Z]|q[a-z_]+\.h$)/) breach("Qt outside ui/ and platform/qt/: " name)
        # The standard library has no name that ends in .h but those of C, which have a better one.
        if (!on_system && name !~ /^q[a-z_]+\.h$/ && (name ~ /\.h$/ || name == "csignal"))
            breach("operating system outside platform/posix/: " name)
    }
    /^[ \t]*#[ \t]*include[ \t]*"/ {
        name = $0
        sub(/^[^"]*"/, "", name)
        sub(/".*/, "", name)
        if (name ~ /\.moc$/) next
        if (!may_include(folder, name)) breach(folder " may not include " name)
        if (!on_qt && name ~ /^([a-z]+\/ui|platform\/qt)\//) breach("logic may not include windows: " name)
        if (!on_system && name ~ /^platform\/posix\//) breach("an implementation where the interface will do: " name)
    }
    END { exit breaches > 0 }'
