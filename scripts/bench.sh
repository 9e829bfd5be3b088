#!/usr/bin/env bash
# What the program's operations cost. In one table, beside SQLite on the same data in the same run:
#
#   scripts/bench.sh              with a million cheques; some minutes
#   scripts/bench.sh windows      also what the operator waits for in the windows, with few cheques
#                                 and with a million, what the panel's sums cost, when many are
#                                 deleted, and with reports
#   scripts/bench.sh server       what a long way to a server costs a cheque that is saved
#   scripts/bench.sh FILE         the windows, and what is listed of all cheques, on a copy of a file
#                                 made by "valtrino-mdb sample": near the largest size of its format
#                                 making it and measuring it takes an hour
set -euo pipefail
file=
[[ ! -f ${1:-} ]] || file=$(realpath "$1")
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/setup.sh

programs=(shop_bench)
if [[ -n $file ]]; then
    programs=(operations_bench limits_bench)
elif [[ ${1:-} == server ]]; then
    programs=(server_bench)
elif [[ ${1:-} == windows ]]; then
    programs+=(operations_bench portfolio_bench deletion_bench report_bench)
fi

need build test
build=build/release
cmake --preset release >/dev/null
cmake --build --preset release --parallel "$(nproc)" --target "${programs[@]}"
for program in "${programs[@]}"; do
    "$build/bench/$program" ${file:+"$file"}
done
