#!/usr/bin/env bash
# Shows how much of the engine and of the recordsets is reached by their own tests and by those of
# what is made of them, the tool and the agenda; file by file, and writes what none of them does into
# build/coverage. Its last lines are the totals; it fails where they are below what
# coverage_totals.py wants. Takes some ten minutes with the build.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/setup.sh

need build test coverage
build=build/coverage
cmake --preset coverage
tests=(jet_test ado_test tools_test agenda_test)
programs=(tests/jet_station bin/valtrino-mdb) # that they start
cmake --build --preset coverage --parallel "$(nproc)" --target "${tests[@]}"

rm -f "$build"/*.profraw
for test in "${tests[@]}"; do
    QT_QPA_PLATFORM=offscreen LLVM_PROFILE_FILE="$build/$test-%m.profraw" \
        "$build/tests/$test" --gtest_brief=1
done
llvm-profdata merge -sparse "$build"/*.profraw -o "$build/all.profdata"

objects=()
for object in "${tests[@]/#/tests/}" "${programs[@]}"; do
    objects+=(-object "$build/$object")
done
failed=0
for layer in jet ado; do
    data=$build/$layer
    llvm-cov export "${objects[@]:1}" -instr-profile="$build/all.profdata" -skip-functions \
        "$PWD/platform/$layer" >"$data.json"
    python3 scripts/coverage_totals.py "$data.json" "$PWD" "platform/$layer" "$data-missed.txt" \
        >"$data.txt" || failed=1
    head -n -2 "$data.txt"
    printf 'What no test reaches: %s\n\n' "$data-missed.txt"
done
tail -q -n 2 "$build"/{jet,ado}.txt
exit "$failed"
