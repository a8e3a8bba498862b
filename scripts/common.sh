# shellcheck shell=bash
# What ./run, ./test and .ci/run share: installing packages, building a preset, running its tests.
# Sourced by bash scripts that have `set -euo pipefail` and stand in the top folder of the sources.

say() { printf '%s\n' "$*" >&2; }

# Runs a command with its output in a log that is shown only when the command fails.
quietly() {
    local log code=0
    log=$(mktemp)
    "$@" >"$log" 2>&1 </dev/null || code=$?
    ((code == 0)) || cat "$log" >&2
    rm -f "$log"
    return "$code"
}

# packages_of GROUP…: the names that packages.txt lists under those groups.
packages_of() {
    awk -v wanted=" $* " '
        { sub(/#.*/, "") }
        $1 ~ /^\[.*\]$/ { group = substr($1, 2, length($1) - 2); next }
        NF && index(wanted, " " group " ") { print $1 }' packages.txt
}

# install_packages GROUP…: installs what is missing; touches nothing and asks nobody when all is there.
install_packages() {
    local wanted missing=() package status become=()
    mapfile -t wanted < <(packages_of "$@")
    if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
        say "No apt here. ampdesk needs what these Debian 12 packages hold: ${wanted[*]}"
        return 0
    fi
    for package in "${wanted[@]}"; do
        status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
        [[ $status == installed ]] || missing+=("$package")
    done
    ((${#missing[@]} > 0)) || return 0
    if ((EUID != 0)); then
        if ! command -v sudo >/dev/null; then
            say "Packages are missing, and there is neither root nor sudo to install them."
            say "As root: apt-get install --no-install-recommends ${missing[*]}"
            return 1
        fi
        become=(sudo)
        sudo -v # asks for the password here, not behind the log
    fi
    say "Installing: ${missing[*]}"
    local apt=("${become[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y)
    quietly "${apt[@]}" update
    quietly "${apt[@]}" install --no-install-recommends "${missing[@]}"
}

# build_preset PRESET [CONFIGURED]: configures when there is need, then builds; CONFIGURED is the preset whose
# folder it builds in, when its name is another. On a terminal one line of progress that moves; elsewhere one
# line; on failure all that was said.
build_preset() {
    local preset=$1 configured=${2-$1}
    if [[ ! build/$configured/build.ninja -nt CMakePresets.json ]]; then
        say "Configuring $configured"
        quietly cmake --preset "$configured"
    fi
    local build=(cmake --build --preset "$preset" --parallel "$(nproc)")
    if [[ -t 2 ]]; then
        "${build[@]}" >&2 </dev/null
    else
        say "Building $preset"
        quietly "${build[@]}" -- --quiet
    fi
}

# run_suite PRESET [CTEST ARGUMENTS…]: the tests of a built preset. Finding none is a failure.
run_suite() {
    local preset=$1
    shift
    rm -f "build/$preset/test-results.xml"
    ctest --preset "$preset" --parallel "$(nproc)" --no-tests=error \
        --output-junit "$PWD/build/$preset/test-results.xml" "$@" </dev/null
}

# suite_counts PRESET: what run_suite counted there, in one line.
suite_counts() {
    local results=build/$1/test-results.xml
    if [[ ! -f $results ]]; then
        echo "$1: no test was run"
        return
    fi
    awk -v preset="$1" -F'"' '
        /^[ \t]*tests=/ { tests = $2 }
        /^[ \t]*failures=/ { failures = $2 }
        /^[ \t]*disabled=/ { left_out += $2 }
        /^[ \t]*skipped=/ { left_out += $2; exit }
        END { printf "%s: %d tests, %d failed, %d skipped\n", preset, tests, failures, left_out }' "$results"
}
