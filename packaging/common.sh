# shellcheck shell=bash
# Sourced by what makes packages: where they go, what they are called, what they are dated with. The
# version is the one of CMakeLists.txt; all files bear the time of the last commit, so that who packs
# the same commit again gets the same bytes.
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit
source scripts/setup.sh

tree=$PWD
out=$tree/build/packages
version=$(sed -n 's/^project(Valtrino VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
versioned=valtrino-$version
SOURCE_DATE_EPOCH=$(packaging/epoch)
# Qt puts the time of each picture into what it makes of it.
export SOURCE_DATE_EPOCH QT_RCC_SOURCE_DATE_OVERRIDE=$SOURCE_DATE_EPOCH LC_ALL=C.UTF-8 TZ=UTC
umask 022
mkdir -p "$out"

# Always the same place: the compiler's cache knows it again.
work=$out/work-$(basename "$0")
rm -rf --one-file-system "$work"
mkdir "$work"
trap 'rm -rf --one-file-system "$work"' EXIT

# packed <folder> <name in it> <file.tar.xz>: always the same bytes for the same files.
packed() {
    tar --sort=name --mtime="@$SOURCE_DATE_EPOCH" --owner=0 --group=0 --numeric-owner \
        --format=gnu -C "$1" -c "$2" | xz -T1 -6 >"$3"
}

# sources <folder>: what is committed, or all of an unpacked archive, in the folder valtrino-<version> there.
sources() {
    if commit >/dev/null; then
        is_current "$out/$versioned.tar.xz" || packaging/source
        tar -C "$1" -xf "$out/$versioned.tar.xz"
    else
        mkdir "$1/$versioned"
        tar --exclude='./build*' -c . | tar -C "$1/$versioned" -x
    fi
}

# As it is at the beginning: what is committed meanwhile is not packed.
head=$(git rev-parse HEAD 2>/dev/null || true)
commit() { [ -n "$head" ] && echo "$head"; }
# Of which commit a package was made is noted beside it.
is_current() { [ -s "$1" ] && [ "$(cat "$1.commit" 2>/dev/null)" = "$(commit)" ]; }
made() {
    commit >"$out/$1.commit" || true
    (cd "$out" && sha256sum "$1")
}
