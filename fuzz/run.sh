#!/usr/bin/env bash
# Builds the fuzz targets and gives each of them RUNS inputs, 20000 unless told; more arguments go to
# libFuzzer, as in `fuzz/run.sh 1000000 -seed=7`. TARGETS="NAME…" picks some. Stops at the first
# finding and says which input it is. What has been learnt is kept in build/fuzz/corpus, or in the
# folder that CORPUS names: an empty one makes the run the same every time.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
source scripts/common.sh

runs=${1:-20000}
(($# == 0)) || shift
install_packages run fuzz
build_preset fuzz asan

findings=build/fuzz/findings
mkdir -p "$findings"
targets=()
if [[ -n ${TARGETS-} ]]; then
    read -ra targets <<<"$TARGETS"
else
    for program in fuzz/*.cpp; do targets+=("$(basename "$program" .cpp)"); done
fi

# A fixed seed: the same sources give the same verdict. An argument overrides it.
fuzz() {
    local target=$1
    shift
    local corpus=${CORPUS:-build/fuzz/corpus}/$target
    mkdir -p "$corpus"
    if ! quietly "build/asan/bin/fuzz_$target" -runs="$runs" -seed=1 -max_len=2048 -timeout=10 \
        -rss_limit_mb=1024 -print_final_stats=1 -artifact_prefix="$findings/$target-" "$@" \
        "$corpus" "tests/data/fuzz/$target"; then
        say "fuzz: $target has a finding in $findings; run it alone with" \
            "build/asan/bin/fuzz_$target $findings/$target-…"
        return 255 # xargs begins no other target
    fi
}
export -f fuzz quietly say
export runs findings
printf '%s\0' "${targets[@]}" | xargs -0 -P "$(nproc)" -I {} bash -c 'fuzz "$@"' fuzz {} "$@"
echo "fuzz: ${#targets[@]} targets, $runs inputs each, no finding"
