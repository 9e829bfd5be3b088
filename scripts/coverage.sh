#!/usr/bin/env bash
# Shows how much of the engine and of the recordsets their own tests reach, file by file, and writes
# which lines none of them does into build/coverage. Takes some ten minutes with the build.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/setup.sh

need build test coverage
build=build/coverage
cmake --preset coverage
cmake --build --preset coverage --parallel "$(nproc)" --target jet_test ado_test

# measure <test> <folder>
measure() {
    local test=$build/tests/$1 profile=$build/$1.profdata
    rm -f "$build/$1"-*.profraw
    LLVM_PROFILE_FILE="$build/$1-%p.profraw" "$test" --gtest_brief=1
    llvm-profdata merge -sparse "$build/$1"-*.profraw -o "$profile"
    rm -f "$build/$1"-*.profraw
    llvm-cov export "$test" -instr-profile="$profile" -format=lcov "$2" |
        awk -F '[:,]' -v root="$PWD/" '/^SF:/ { file = substr($2, length(root) + 1) }
            /^DA:/ && $3 == 0 { print file ":" $2 }' >"$build/$1-missed.txt"
    llvm-cov report "$test" -instr-profile="$profile" "$2"
    printf 'Lines that no test reaches: %s\n\n' "$build/$1-missed.txt"
}

measure jet_test platform/jet
measure ado_test platform/ado
