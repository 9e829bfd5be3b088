#!/bin/sh
# Pictures of every window, light and dark: <state>-<light|dark>-<percent>.png. Those in docs/windows
# are at 100 and 200 %.
#   scripts/pictures.sh <build folder> <folder for the pictures> [<percent> ...]
set -eu
build=$1
mkdir -p "$2"
pictures=$(cd "$2" && pwd)
shift 2
[ $# -gt 0 ] || set -- 100 200
screen=$(mktemp)
trap 'rm -f "$screen"' EXIT
for percent in "$@"; do
    # A screen with as much room at each scale: a window is to be seen as it opens.
    sed "s/1366,/$((1366 * percent / 100)),/; s/728,/$((728 * percent / 100)),/" \
        "$(dirname "$0")/../tests/support/screen.json" >"$screen"
    QT_QPA_PLATFORM=offscreen:configfile=$screen VALTRINO_PICTURES=$pictures \
        QT_SCALE_FACTOR=$((percent / 100)).$(printf %02d $((percent % 100))) \
        "$build/tests/windows_test" --gtest_filter='*Pictures.ShowEveryText*' >/dev/null
done
rm -f "$pictures"/diretorio-* # with the folders of this machine
ls "$pictures" | wc -l
