#!/usr/bin/env bash
# Holds everything that works on a thread of its own against the thread sanitizer: the daily copy, the
# reading of folders, the packing of a workbook, and what of the engine they use beside the program.
# Takes some minutes for the build in build/tsan.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/setup.sh

need build test
cmake --preset tsan
cmake --build --preset tsan --parallel "$(nproc)" --target controls_test print_test shell_test
# Without the tests that have another program read a file: the sanitizer doesn't bear its start.
ctest --preset tsan --parallel "$(nproc)" \
    --tests-regex '^(controls_test\.Folders|print_test\.Files|shell_test\.DailyCopy)\.' \
    --exclude-regex '^print_test\.Files\.(Csv|Xlsx(Has|Loses|Holds|Tells))'
