#!/usr/bin/env bash
# fuzz.sh [<minutes>]: lets each fuzzer look for what harms the engine, 30 minutes if not said, as many
# side by side as there are processors. ./test does the same for five seconds each. What is found is left
# in build/fuzz/found; each time another way is taken.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/setup.sh

need build test
fuzzers=(fuzz_file fuzz_init fuzz_journal fuzz_rules fuzz_sql)
found=build/fuzz/found/
seconds=$((${1:-30} * 60))
cmake --preset fuzz
cmake --build --preset fuzz --parallel "$(nproc)" --target "${fuzzers[@]}"
mkdir -p "$found"
printf '%s\n' "${fuzzers[@]}" | FUZZ_SEED=0 FUZZ_ARTIFACTS=$found xargs -P "$(nproc)" -I{} bash -c \
    'tests/fuzz/fuzz.sh build/fuzz/tests/{} tests/fuzz/corpus/{} "$1" >build/fuzz/{}.log 2>&1 ||
        { echo "{}:"; tail -n 40 build/fuzz/{}.log; exit 1; }' _ "$seconds"
grep -H 'number_of_executed_units' build/fuzz/*.log
