#!/usr/bin/env bash
# How much the tests notice: puts small faults into a copy of the program, one at a time, builds what they touch
# and tells which test fails.
#
#   tests/mutate.sh [--soak | --check] [LIST…]
#
# LIST: files such as tests/mutants/station.diff; all of them unless told.
# With --soak the faults that its witness can see, marked [soak], while the soak runs; it has 100 000 exchanges on
# each of three seeds. One line a fault, ready for a Markdown table, and the count at the end; fails when a fault
# cannot be put in, does not build, or is in nobody's way before it is put in. The copy stays in build/mutants: a
# second run builds less.
#
# In a list a fault is a title, "# FAULT: WHAT AN OPERATOR SUFFERS", and a patch as `git diff -U2` makes it.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
source scripts/common.sh

soak=no check=no
case ${1-} in
    --soak) soak=yes && shift ;;
    --check) check=yes && shift ;;
esac
lists=("$@")
((${#lists[@]} > 0)) || lists=(tests/mutants/*.diff)
top=$PWD
copy=$top/build/mutants/tree
faults=$(mktemp -d)
trap 'rm -rf "$faults"' EXIT

# One file a fault, named in the order of the lists.
awk -v folder="$faults" '/^# /{ close(file); file = sprintf("%s/%03d", folder, ++n) } { print > file }' "${lists[@]}"
if [[ $soak == yes ]]; then
    grep -L '^# \[soak\]' "$faults"/* | xargs -r rm
fi

if [[ $check == yes ]]; then
    code=0
    for fault in "$faults"/*; do
        git apply --check "$fault" || { say "Cannot be put in: $(head -n1 "$fault")"; code=1; }
    done
    exit "$code"
fi

# The tracked files as they are now, and what an earlier run has built.
mkdir -p "$copy"
find "$copy" -mindepth 1 -maxdepth 1 ! -name build -exec rm -rf {} +
git ls-files -z | while IFS= read -r -d '' file; do [[ ! -e $file ]] || printf '%s\0' "$file"; done |
    tar --null -T - -cf - | tar -xmf - -C "$copy" # as new: an object of the last run may hold a fault
cd "$copy"
export QT_QPA_PLATFORM=offscreen GIT_CEILING_DIRECTORIES=$top/build/mutants

# run PROGRAM: prints the first test that fails in it; succeeds when one has failed, and fails again by itself.
run() {
    local log=$faults/log code=0 test
    timeout 120 "$1" --gtest_fail_fast >"$log" 2>&1 </dev/null || code=$?
    ((code != 0)) || return 1
    test=$(grep -a -o -m1 '^\[  FAILED  \] [^ ,]*' "$log" || grep -a '^\[ RUN ' "$log" | tail -n1)
    test=${test#*] }
    ! timeout 120 "$1" --gtest_filter="$test" >>"$log" 2>&1 </dev/null || return 1
    ((code != 124)) || test+=" (hangs)"
    ((code < 128)) || test+=" (crashes)"
    echo "$test"
}

# The test program of the folder that FILE is in.
program_of() {
    case $1 in
        shell/main.cpp) echo test_program ;;
        */ui/* | platform/qt/*) echo test_windows ;;
        *) echo "test_${1%%/*}" ;;
    esac
}

# notice PROGRAM: which test notices, if any; that program's are the first to be asked.
notice() {
    local program
    for program in "build/dev/bin/$1" build/dev/bin/test_*; do
        [[ -x $program ]] || continue
        quietly cmake --build --preset dev --parallel "$(nproc)" --target "${program##*/}" -- --quiet || return 2
        ! run "$program" || return 0
    done
    return 1
}

notice_by_soak() {
    local seed log=$faults/log code
    quietly cmake --build --preset bench --parallel "$(nproc)" --target soak -- --quiet || return 2
    for seed in 1 2 3; do
        code=0
        timeout 120 build/release/bin/soak --exchanges 100000 --percent 10 --seed "$seed" >"$log" 2>&1 || code=$?
        ((code != 0)) || continue
        if ((code == 124)); then
            echo "hangs on seed $seed"
        else
            grep -m1 '^first ' "$log" || echo "seed $seed"
        fi
        return 0
    done
    return 1
}

say "Building without a fault"
if [[ $soak == yes ]]; then
    look=notice_by_soak
    quietly cmake --preset release
else
    look=notice
    quietly cmake --preset dev -DAMPDESK_STRICT=OFF # a fault may leave something unused
    quietly cmake --build --preset dev --parallel "$(nproc)"
fi
code=0
by=$("$look" none) || code=$?
if ((code != 1)); then
    say "Fails without a fault: $by"
    exit 1
fi

tried=0 noticed=0 useless=0
for fault in "$faults"/[0-9]*; do
    title=$(sed -n '1s/^# \(\[soak\] \)\?//p' "$fault")
    file=$(sed -n 's/^+++ b\///p' "$fault" | head -n1)
    if ! git apply "$fault"; then
        say "Cannot be put in: $title ($file)"
        ((++useless))
        continue
    fi
    code=0
    by=$("$look" "$(program_of "$file")") || code=$?
    git apply --reverse "$fault"
    if ((code == 2)); then
        say "Does not build: $title ($file)"
        ((++useless))
        continue
    fi
    ((++tried))
    ((code != 0)) || ((++noticed))
    printf '| `%s` | %s | %s | %s |\n' "$file" "${title%%: *}" "${title#*: }" "${by:-**nobody**}"
done
echo "mutants: $tried tried, $noticed noticed, $((tried - noticed)) not noticed, $useless useless"
((useless == 0))
