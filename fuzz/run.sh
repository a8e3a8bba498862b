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
build_preset fuzz

findings=build/fuzz/findings
mkdir -p "$findings"
targets=()
if [[ -n ${TARGETS-} ]]; then
    read -ra targets <<<"$TARGETS"
else
    for program in build/fuzz/bin/fuzz_*; do targets+=("${program#build/fuzz/bin/fuzz_}"); done
fi

for target in "${targets[@]}"; do
    corpus=${CORPUS:-build/fuzz/corpus}/$target
    mkdir -p "$corpus"
    # A fixed seed: the same sources give the same verdict. An argument overrides it.
    if ! quietly "build/fuzz/bin/fuzz_$target" -runs="$runs" -seed=1 -max_len=2048 -timeout=10 \
        -rss_limit_mb=1024 -print_final_stats=1 -artifact_prefix="$findings/$target-" "$@" \
        "$corpus" "tests/data/fuzz/$target"; then
        say "fuzz: $target has a finding in $findings; run it alone with" \
            "build/fuzz/bin/fuzz_$target $findings/$target-…"
        exit 1
    fi
done
echo "fuzz: ${#targets[@]} targets, $runs inputs each, no finding"
