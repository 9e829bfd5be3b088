#!/bin/sh
# Pictures of every window, light and dark, at 100 and 200 %: <state>-<light|dark>-<percent>.png.
#   scripts/pictures.sh <build folder> <folder for the pictures>
set -eu
build=$1
mkdir -p "$2"
pictures=$(cd "$2" && pwd)
for scale in 1 2; do
    QT_QPA_PLATFORM=offscreen QT_SCALE_FACTOR=$scale VALTRINO_PICTURES=$pictures \
        "$build/tests/windows_test" --gtest_filter='*Pictures.ShowEveryText*' >/dev/null
done
ls "$pictures" | wc -l
