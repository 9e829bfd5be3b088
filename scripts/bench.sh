#!/usr/bin/env bash
# What the program's operations cost. In one table, beside SQLite on the same data in the same run:
#
#   scripts/bench.sh              with a million cheques; some minutes; and, where Debian's server is
#                                 installed, what a long way to one costs a cheque that is saved
#   scripts/bench.sh windows      also what the operator waits for in the windows, with few cheques
#                                 and with a million, what the panel's sums cost, when many are
#                                 deleted, and with reports
#   scripts/bench.sh server [N]   the same million cheques in a file and on a server, side by side;
#                                 what a clerk waits for in each window over a server with N cheques,
#                                 ten million, which take some 10 GB, if that isn't said; and at each
#                                 of 64 stations that work for two minutes
#   scripts/bench.sh FILE         the windows, and what is listed of all cheques, on a copy of a file
#                                 made by "valtrino-mdb sample": near the largest size of its format
#                                 making it and measuring it takes an hour
set -euo pipefail
file=
size=
[[ ${1:-} != server ]] || size=${2:-}
[[ ! -f ${1:-} ]] || file=$(realpath "$1")
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/setup.sh

programs=(shop_bench)
if [[ -n $file ]]; then
    programs=(operations_bench limits_bench)
elif [[ ${1:-} == server ]]; then
    programs=(server_bench compared_bench windows_bench stations_bench)
elif [[ ${1:-} == windows ]]; then
    programs+=(operations_bench portfolio_bench deletion_bench report_bench)
fi
if [[ -z $file && ${1:-} != server ]]; then
    if [[ -x /usr/lib/postgresql/15/bin/postgres ]]; then
        programs+=(server_bench)
    else
        echo "Over a server nothing is measured: Debian's package postgresql isn't installed"
    fi
fi

need build test
build=build/release
# Those over a server use what its tests start it with.
cmake --preset release -DBUILD_TESTING=ON >/dev/null
cmake --build --preset release --parallel "$(nproc)" --target "${programs[@]}"
for program in "${programs[@]}"; do
    arguments=(${file:+"$file"})
    if [[ -n $size && $program == windows_bench ]]; then
        arguments=("$size")
    elif [[ -n $size && $program == compared_bench ]]; then
        arguments=("$((size < 1000000 ? size : 1000000))")
    fi
    "$build/bench/$program" ${arguments[@]+"${arguments[@]}"}
done
