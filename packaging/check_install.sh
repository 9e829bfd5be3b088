#!/usr/bin/env bash
# What `cmake --install` makes of a build folder: that it is all there, by the desktop's rules, of one
# version, and runs in another place than it was installed in.
set -euo pipefail
build=$1 version=$2
source_folder=$(cd "$(dirname "$0")/.." && pwd)
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

cmake --install "$build" --prefix "$place/first" >/dev/null
mv "$place/first" "$place/moved"
cd "$place/moved"
share=$place/moved/share

desktop-file-validate "$share"/applications/*.desktop
appstreamcli validate --no-net "$share"/metainfo/*.xml >"$place/said" || fail "$(cat "$place/said")"
for entry in "$share"/applications/*.desktop; do
    program=$(sed -n 's/^Exec=//p' "$entry")
    [ -x "bin/$program" ] || fail "$entry starts $program, which isn't there"
    icon=$(sed -n 's/^Icon=//p' "$entry")
    [ -f "$share/icons/hicolor/scalable/apps/$icon.svg" ] || fail "there is no icon $icon"
done
for program in bin/*; do
    page=$share/man/man1/${program#bin/}.1
    [ -s "$page" ] || fail "no manual page of $program"
    grep -q '^\.so ' "$page" || ! command -v man >/dev/null || [ -z "$(LC_ALL=C.UTF-8 man --warnings -l -Tutf8 -Z "$page" 2>&1 >/dev/null)" ] ||
        fail "$page is badly written"
done

[ "$(env -u DISPLAY -u WAYLAND_DISPLAY bin/valtrino --version)" = "Valtrino $version" ] || fail "bin/valtrino --version"
[ "$(bin/valtrino-mdb --version)" = "valtrino-mdb $version" ] || fail "bin/valtrino-mdb --version"
grep -q "<release version=\"$version\" date=\"20" "$share"/metainfo/*.xml || fail "another version in the metainfo"
grep -q "\b$version\b" "$source_folder/CHANGELOG.md" || fail "the changelog doesn't name $version"
bin/valtrino-mdb create "$place/automacao.mdb" >/dev/null

# What the shell offers for the last of these words.
offered() {
    bash -c 'source "$0"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _valtrino_mdb "$1" "${@: -1}"
        echo "${COMPREPLY[*]}"' "$share/bash-completion/completions/valtrino-mdb" "$@"
}
[ "$(offered valtrino-mdb ch)" = check ] || fail "a command isn't completed"
[ "$(offered valtrino-mdb create loja.mdb --j)" = "--jet4 --jet3" ] || fail "no options are offered"
