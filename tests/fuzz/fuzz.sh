#!/usr/bin/env bash
# fuzz.sh <fuzzer> <corpus folder> <seconds>: replays the corpus, then looks for new paths from there.
# What is found is left in the current folder; new inputs of interest aren't kept. It goes the same way each
# time; FUZZ_SEED=0 takes another one.
set -euo pipefail
fresh=$(mktemp -d)
trap 'rm -rf "$fresh"' EXIT
dictionary=$(dirname "$0")/$(basename "$2").dict
options=(-max_total_time="$3" -timeout=60 -rss_limit_mb=3000 -max_len=4096 -print_final_stats=1 -print_funcs=0 -verbosity=0 -seed="${FUZZ_SEED:-1}")
[ -f "$dictionary" ] && options+=(-dict="$dictionary")
"$1" "${options[@]}" -artifact_prefix="${FUZZ_ARTIFACTS:-./}" "$fresh" "$2"
