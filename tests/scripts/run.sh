#!/usr/bin/env bash
# ./run in a clone of its own, with a build that only puts the real valtrino-mdb in place and a
# program that only says where it finds its data. Called with the source folder, the folder of the
# built programs and a program that has a database open as long as it gets input.
set -euo pipefail
source_folder=$(realpath "$1")
programs=$(realpath "$2")
station=$3
place=$(realpath "$(mktemp -d)")
trap 'rm -rf "$place"' EXIT

fail() {
    echo "FAILED: $*" >&2
    cat "$place/output" >&2 || true
    exit 1
}

# What ./run asks of the machine.
mkdir -p "$place/tools"
cat >"$place/tools/dpkg-query" <<'END'
#!/bin/sh
echo "ii "
END
cat >"$place/tools/cmake" <<END
#!/usr/bin/env bash
echo "cmake \$*"
case \$1 in
--preset) mkdir -p build/release && echo "CMAKE_HOME_DIRECTORY:INTERNAL=\$PWD" >build/release/CMakeCache.txt ;;
--build)
    mkdir -p build/release/bin
    cp "$programs/valtrino-mdb" build/release/bin/
    cp "$place/tools/program" build/release/bin/valtrino ;;
esac
END
cat >"$place/tools/program" <<'END'
#!/bin/sh
if [ "${1:-}" = --screen ]; then [ "$DISPLAY" != :9999 ]; exit; fi
echo "$DISPLAY" >"$FOUND.screen"
here=$(dirname "$0")
if [ -f "$here/init.ini" ]; then head -n 1 "$here/init.ini"; else echo "$here"; fi >"$FOUND"
END
printf '#!/bin/sh\necho 77 >&3; exec sleep 60\n' >"$place/tools/Xvfb"
printf '#!/bin/sh\nexec sleep 60\n' >"$place/tools/openbox"
printf '#!/bin/sh\necho PORT=5999; exec sleep 60\n' >"$place/tools/x11vnc"
chmod +x "$place"/tools/*

new_place() {
    rm -rf "${place:?}/clone" "${place:?}/home" "${place:?}/chosen"
    mkdir -p "$place/clone/scripts" "$place/home"
    cp "$source_folder/run" "$place/clone/"
    cp "$source_folder"/scripts/*.sh "$place/clone/scripts/"
}
clone=$place/clone
data=$place/home/data/valtrino

# run_it: as a user does; where the program then finds its data.
run_it() {
    : >"$place/found"
    env PATH="$place/tools:$PATH" HOME="$place/home" XDG_DATA_HOME="$place/home/data" DISPLAY=:0 \
        FOUND="$place/found" "$@" "$clone/run" >"$place/output" 2>&1
}
expect_found() { [ "$(cat "$place/found")" = "$1" ] || fail "the data is in $(cat "$place/found")"; }
expect_file() { [ -f "$1" ] || fail "$1 is missing"; }
expect_none() { [ ! -e "$1" ] || fail "$1 is there"; }
sum() { sha256sum <"$1"; }
mdb() { "$programs/valtrino-mdb" "$@"; }

echo "A first run: sample data, in the user's folder, and told"
new_place
run_it || fail "the first run"
expect_found "$data"
expect_file "$data/automacao.mdb"
grep -q "$data" "$place/output" || fail "it isn't told where the data is"
[ -z "$(find "$clone" -name '*.mdb')" ] || fail "there is data in the clone"

echo "What cures a build costs no data"
before=$(sum "$data/automacao.mdb")
rm -rf "$clone/build"
run_it || fail "after the build was deleted"
expect_found "$data"
[ "$(sum "$data/automacao.mdb")" = "$before" ] || fail "other data"

echo "A folder chosen in the program is remembered too"
mkdir "$place/chosen"
echo "$place/chosen" >"$clone/build/release/bin/init.ini" # the file that the link names
rm -rf "$clone/build"
run_it || fail "with a chosen folder"
expect_found "$place/chosen"
expect_none "$place/chosen/automacao.mdb"

echo "VALTRINO_DADOS names another folder"
run_it VALTRINO_DADOS="$place/home/other" || fail "with another folder"
expect_found "$place/home/other"
expect_file "$place/home/other/automacao.mdb"

echo "What earlier versions kept in the build folder is moved, with its copies"
new_place
old=$clone/build/release/bin
mkdir -p "$old/backup"
mdb sample "$old/automacao.mdb" --cheques 10 --clients 5
cp "$old/automacao.mdb" "$old/backup/automacao-2026-01-02.mdb"
cp "$old/automacao.mdb" "$old/automacao-substituido-2026-01-02-101010.mdb"
printf '%s' '' >"$old/automacao.mdb-journal"
before=$(sum "$old/automacao.mdb")
run_it || fail "with data of old"
expect_found "$data"
for file in automacao.mdb backup/automacao-2026-01-02.mdb automacao-substituido-2026-01-02-101010.mdb; do
    [ "$(sum "$data/$file")" = "$before" ] || fail "$file isn't what it was"
    expect_none "$old/$file"
done
mdb check "$data/automacao.mdb" >/dev/null || fail "the moved database"

echo "A database that is in use isn't moved"
new_place
mkdir -p "$old"
mdb sample "$old/automacao.mdb" --cheques 10 --clients 5
before=$(sum "$old/automacao.mdb")
mkfifo "$place/input" "$place/says"
"$station" foreign "$old/automacao.ldb" <"$place/input" >"$place/says" &
exec 8>"$place/input" 9<"$place/says"
read -r -n 1 _ <&9 # it has it
if run_it; then fail "moved while open"; fi
grep -q "está aberto" "$place/output" || fail "it isn't told why"
exec 8>&- 9<&-
wait
rm -f "$old/automacao.ldb"
[ "$(sum "$old/automacao.mdb")" = "$before" ] || fail "changed"
expect_none "$data/automacao.mdb"
run_it || fail "afterwards"
[ "$(sum "$data/automacao.mdb")" = "$before" ] || fail "not moved afterwards"

echo "Nothing is overwritten"
mdb sample "$old/automacao.mdb" --cheques 3 --clients 5
other=$(sum "$old/automacao.mdb")
run_it || fail "with two databases"
expect_found "$data"
[ "$(sum "$data/automacao.mdb")" = "$before" ] || fail "overwritten"
[ "$(sum "$old/automacao.mdb")" = "$other" ] || fail "the old one was touched"
grep -q "There is a database in $old" "$place/output" || fail "it isn't told"

echo "An init.ini of old that names the build folder doesn't keep the data there"
new_place
mkdir -p "$old"
mdb sample "$old/automacao.mdb" --cheques 10 --clients 5
printf '%s\r\n' "$old" >"$old/init.ini"
run_it || fail "with an init.ini of old"
expect_found "$data"
expect_file "$data/automacao.mdb"
expect_none "$old/automacao.mdb"

echo "An init.ini of old that names a folder elsewhere is kept"
new_place
mkdir -p "$old" "$place/chosen"
echo "$place/chosen" >"$old/init.ini"
run_it || fail "with a chosen folder of old"
expect_found "$place/chosen"
rm -rf "$clone/build"
run_it || fail "and after the build was deleted"
expect_found "$place/chosen"

echo "A clone that was moved is configured anew"
mv "$clone" "$place/moved"
clone=$place/moved
run_it || fail "in another place"
grep -qx "cmake --preset release --fresh" "$place/output" || fail "not configured anew"
expect_found "$place/chosen"
run_it || fail "again"
grep -qx "cmake --preset release" "$place/output" || fail "configured anew without need"

echo "A screen that doesn't answer: one of its own, with a word"
run_it DISPLAY=:9999 || fail "without a screen"
grep -q "DISPLAY=:9999 ) does not answer" "$place/output" || fail "it isn't told"
[ "$(cat "$place/found.screen")" = :77 ] || fail "on screen $(cat "$place/found.screen")"

echo "A folder that can't be written is told, not run into"
new_place
mount --bind "$clone" "$clone" 2>/dev/null && mount -o remount,ro,bind "$clone" 2>/dev/null || {
    umount "$clone" 2>/dev/null || true
    chmod a-w "$clone"
}
if [ "$(id -u)" != 0 ] || ! touch "$clone/x" 2>/dev/null; then
    if run_it; then fail "in a folder that can't be written"; fi
    grep -q "Nothing can be written in $clone" "$place/output" || fail "it isn't told why"
fi
umount "$clone" 2>/dev/null || chmod u+w "$clone"
