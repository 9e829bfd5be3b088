# shellcheck shell=bash disable=SC2034  # the lists are read by their names
# Sourced by ./run and ./test: what the tree needs of the machine, in one list of Debian packages.

packages_build="g++ cmake ninja-build ccache qt6-base-dev qt6-svg-dev libpq-dev libsqlite3-dev
    libxlsxwriter-dev libxxhash-dev pkg-config fonts-dejavu-core qt6-translations-l10n cmark-gfm"
packages_test="git mold clang clang-format clang-tidy libclang-rt-dev libgtest-dev libgmock-dev
    libbenchmark-dev mdbtools dbus-daemon at-spi2-core imagemagick xvfb x11-xkb-utils openbox xdotool
    poppler-utils python3-openpyxl cups cups-client hunspell hunspell-pt-br desktop-file-utils appstream"
packages_coverage="llvm"
packages_package="debhelper fakeroot dpkg-dev xz-utils"
packages_try="mmdebstrap lintian"
packages_screen="xvfb openbox x11vnc"
packages_windows="g++-mingw-w64-x86-64-posix libz-mingw-w64-dev tcl googletest dpkg-dev librsvg2-bin icoutils
    nsis zip unzip wine64"

# Everything is built in the folder "build" here: ends saying so where that can't be.
need_writable_tree() {
    mkdir -p build 2>/dev/null && [ -w build ] && return
    printf 'Nothing can be written in %s, where the build would be.\nCopy the folder to a place of your own, and start it there.\n' \
        "$PWD" >&2
    exit 1
}

# need <group>...: has every package of the groups (build, test, windows...) installed, or ends
# telling how to install it.
need() {
    local group package missing=()
    for group in "$@"; do
        local list="packages_$group"
        for package in ${!list}; do
            dpkg-query -W -f='${db:Status-Abbrev}' "$package" 2>/dev/null | grep -q '^ii' ||
                missing+=("$package")
        done
    done
    [ ${#missing[@]} -eq 0 ] && return
    if [ "$(id -u)" -ne 0 ]; then
        printf 'Packages are missing. Install them with\n\n    sudo apt-get update && sudo apt-get install --no-install-recommends %s\n\n' \
            "${missing[*]}" >&2
        exit 1
    fi
    printf 'Installing %s\n' "${missing[*]}"
    apt-get update -qq
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
}
