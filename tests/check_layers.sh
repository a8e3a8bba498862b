#!/usr/bin/env bash
# Holds the folder rule of CONTRIBUTING.md: who may include whom, where Qt and the operating system
# may be seen, how long a file may be. check_layers.sh [TOP FOLDER] prints each breach and fails when there is one.
set -euo pipefail
cd "${1:-$(dirname "$0")/..}"

shopt -s nullglob  # a tree of a test has some of the folders only
# shellcheck disable=SC2016 # the dollars are awk's
find {platform,buslink,amplifier,controlhead,terminal,tools,station,demo,shell,tests,bench,fuzz,docs}* \
    -type f \( -name '*.cpp' -o -name '*.h' \) -print0 | sort -z |
    xargs -0 -r awk '
    BEGIN {  # what a folder may include
        may["platform"] = "platform"
        may["buslink"] = "buslink|platform"
        may["amplifier"] = "amplifier|buslink|platform"
        may["controlhead"] = "controlhead|amplifier|buslink|platform"
        may["terminal"] = "terminal|buslink|platform"
        may["tools"] = "tools|amplifier|buslink|platform"
        may["station"] = "station|controlhead|terminal|tools|amplifier|buslink|platform"
        may["demo"] = "demo|buslink/wire|platform"
        may["shell"] = "shell|demo|" may["station"]
        may["tests"] = "tests|" may["shell"]
        may["docs"] = "tests/support|" may["shell"]
        may["bench"] = "bench|" may["docs"]
        may["fuzz"] = "fuzz|" may["docs"]
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
    !/^[ \t]*#[ \t]*include[ \t]*[<"]/ { next }
    {
        ours = /^[^<]*"/
        name = $0
        sub(/^[^<"]*[<"]/, "", name)
        sub(/[>"].*/, "", name)
        if (ours && name !~ /\.moc$/ && name !~ "^(" may[folder] ")/") breach(folder " may not include " name)
        if (!on_qt && !ours && name ~ /^(Q[A-Z]|Qt[A-Z]|q[a-z_]+\.h$)/) breach("Qt outside ui/ and platform/qt/: " name)
        if (!on_qt && ours && name ~ /^([a-z]+\/ui|platform\/qt)\//) breach("logic may not include windows: " name)
        # The standard library has no name that ends in .h but those of C, which have a better one.
        if (!on_system && !ours && name !~ /^q[a-z_]+\.h$/ && (name ~ /\.h$/ || name == "csignal"))
            breach("operating system outside platform/posix/: " name)
        if (!on_system && ours && name ~ /^platform\/posix\//) breach("an implementation where the interface will do: " name)
    }
    END { exit breaches > 0 }'
