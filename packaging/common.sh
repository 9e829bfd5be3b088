# shellcheck shell=bash
# Sourced by what makes packages: where they go, what they are called, what they are dated with. The
# version is the one of CMakeLists.txt; all files bear the time of the last commit, so that who packs
# the same commit again gets the same bytes.
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit
source scripts/setup.sh

tree=$PWD
out=$tree/build/packages
version=$(sed -n 's/^project(Valtrino VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
name=valtrino-$version
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

# sources <folder>: what is committed, in the folder valtrino-<version> there.
sources() {
    [ -s "$out/$name.tar.xz" ] && [ "$out/$name.tar.xz" -nt CMakeLists.txt ] || packaging/source
    tar -C "$1" -xf "$out/$name.tar.xz"
}

made() { (cd "$out" && sha256sum "$@"); }
