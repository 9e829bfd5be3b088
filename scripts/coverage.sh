#!/usr/bin/env bash
# Shows how much of the engine and of the recordsets their own tests reach, file by file, and writes
# what none of them does into build/coverage. Its last lines are the totals; it fails where they are
# below what coverage_totals.py wants. Takes some ten minutes with the build.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/setup.sh

need build test coverage
build=build/coverage
cmake --preset coverage
cmake --build --preset coverage --parallel "$(nproc)" --target jet_test ado_test

# measure <layer> <test> [<program that it starts>]...
measure() {
    local layer=$1 data=$build/$1 test=$build/tests/$2 programs=()
    shift 2
    rm -f "$data"-*.profraw
    LLVM_PROFILE_FILE="$data-%m.profraw" "$test" --gtest_brief=1
    llvm-profdata merge -sparse "$data"-*.profraw -o "$data.profdata"
    for program; do
        programs+=(-object "$build/tests/$program")
    done
    llvm-cov export "$test" "${programs[@]}" -instr-profile="$data.profdata" -skip-functions \
        "$PWD/platform/$layer" >"$data.json"
    python3 scripts/coverage_totals.py "$data.json" "$PWD" "platform/$layer" "$data-missed.txt" \
        >"$data.txt" || failed=1
    head -n -2 "$data.txt"
    printf 'What no test reaches: %s\n\n' "$data-missed.txt"
}

failed=0
measure jet jet_test jet_station
measure ado ado_test
tail -q -n 2 "$build"/{jet,ado}.txt
exit "$failed"
