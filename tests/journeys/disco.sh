#!/bin/bash
# The disk is full, on a Jet 4 and on a Jet 3 database: what the clerk saves is refused with a message, stays
# in the window and is saved by the same key once there is room, whether it is the journal or the database
# that has none; a program that starts on a full disk can be worked with too. The copy of the day and
# init.ini fail without harm, and so does the technician's tool. An independent reader finds in the file
# just what was saved.
#
# The disk is a small one of its own, which takes the right to mount. Where the system gives that to
# everybody within a namespace, it is taken there; where it doesn't, this is skipped.
if [ -z "${VALTRINO_DISCO:-}" ]; then
    for kind in -rm -m; do
        if unshare "$kind" true 2> /dev/null; then
            VALTRINO_DISCO=1 exec unshare "$kind" "$0" "$@"
        fi
    done
    echo "skipped: the system lets nobody mount a small disk"
    exit 77
fi
source "$(dirname "$0")/journey.sh"

trap 'umount "$place/data" "$place/program" 2> /dev/null || true; finish' EXIT

# mount_small <folder> <kilobytes>
mount_small() {
    mkdir -p "$1"
    if ! mount -t tmpfs -o "size=$2k" tmpfs "$1" 2> /dev/null; then
        echo "skipped: no small disk can be mounted"
        exit 77
    fi
}

# fill_disk <folder>, free_disk <folder>: not a byte more goes on it; or there is room again.
fill_disk() {
    cat /dev/zero > "$1/filler" 2> /dev/null || true
    [ "$(df --output=avail "$1" | tail -n 1)" -eq 0 ] || fail "the disk isn't full"
}
free_disk() { rm "$1/filler"; }

cheque() { echo "$client|$bank|1234|$1|2026-12-05|2027-01-10|10.0000|$2|Gerente|1"; }
stored() { rows cheques | cut -d '|' -f 2- | sort; }
stored_are() { [ "$(stored)" = "$(sort <<< "$expected")" ]; }
expect_stored() { until_true "$expected instead of $(stored)" stored_are; }
expect_sound() {
    "$programs/valtrino-mdb" check "$place/data/automacao.mdb" > "$place/check" || fail "$(cat "$place/check")"
}

entry="Cadastro de Cheques Recebidos"
fill_cheque() { fill "$name" "$bank_name" 1234 "$1" 05122026 10012027 10,00 Gerente; }

refused() {
    until_window "Mensagem"
    picture "$1"
    keys Return
    until_window "$entry"
    expect_stored
    expect_sound
}

save_without_room_for_the_journal() {
    fill_disk "$place/data"
    fill_cheque 1001
    keys alt+s
    refused disco-registro
    free_disk "$place/data"
    keys alt+s
    expected=$(cheque 1001 "")
    expect_stored
}

# Cheques with long remarks, until the file would have to grow; the journal, which stays, has room.
save_without_room_for_the_file() {
    local remark number=2000
    remark=$(printf 'devolver %.0s' 1 2 3 4 5)fim
    head -c 150000 /dev/zero >> "$place/data/automacao.mdb-journal"
    fill_disk "$place/data"
    fill_cheque $((number + 1))
    typed "$remark"
    keys alt+h             # Vários Cheques
    due=2027-01-10
    while true; do
        number=$((number + 1))
        [ $number = 2001 ] || typed $number
        keys alt+s
        until_true "the save of $number" saved_or_refused $number
        ! title_is "Mensagem" || break
        expected+=$'\n'$(cheque $number "$remark" | sed "s/2027-01-10/$due/")
        due=$(date -d "$due + 30 days" +%Y-%m-%d)
        [ $number -lt 2200 ] || fail "the file never had to grow"
    done
    refused disco-arquivo
    free_disk "$place/data"
    keys alt+s
    expected+=$'\n'$(cheque $number "$remark" | sed "s/2027-01-10/$due/")
    expect_stored
}
saved_or_refused() { title_is "Mensagem" || stored | cut -d '|' -f 4 | grep -qx "$1"; }

# No copy of the day, but everything can be looked at; what can't be deleted now can be later.
start_without_room() {
    rm -r "$place/data/backup"
    fill_disk "$place/data"
    start_program
    until_window "Valtrino"
    keys alt+m e
    until_window "$entry"
    keys alt+l
    until_window "Localizar Cheque Recebidos"
    to_the_list
    keys Home Return Return
    until_window "$entry"
    picture disco-copia
    [ -z "$(find "$place/data/backup" -type f)" ] || fail "half a copy of the day was left"
    keys alt+x
    until_window "Exclusão"
    keys alt+s
    refused disco-exclusao
    free_disk "$place/data"
    keys alt+x
    until_window "Exclusão"
    keys alt+s
    expected=$(sed 1d <<< "$expected")
    expect_stored
    keys Escape
    until_window "Valtrino"
}

choose_a_folder_without_room() {
    local before
    before=$(cat "$place/program/init.ini")
    keys alt+u d
    until_window "Localizar Base de Dados"
    fill_disk "$place/program"
    keys Tab Tab Tab ctrl+a
    typed /outra
    keys alt+s
    until_window "Mensagem"
    picture disco-init
    [ "$(cat "$place/program/init.ini")" = "$before" ] || fail "init.ini was changed"
    keys Return
    until_window "Localizar Base de Dados"
    free_disk "$place/program"
    keys alt+s
    until_true "init.ini" grep -qx /outra "$place/program/init.ini"
    [ "$(ls "$place/program")" = "init.ini"$'\n'"valtrino" ] || fail "$(ls "$place/program")"
    printf '%s\r\n' "$before" > "$place/program/init.ini"
    keys Escape
    until_window "Valtrino"
}

# use_tool_without_room <command>
use_tool_without_room() {
    local before
    before=$(ls "$place/data")
    if "$programs/valtrino-mdb" "$1" "$place/data/automacao.mdb" "$place/data/novo.mdb" \
        > "$place/said" 2>&1; then
        fail "$1 found room: $(cat "$place/said")"
    fi
    grep -q "o disco está cheio" "$place/said" || fail "$1 said: $(cat "$place/said")"
    [ "$(ls "$place/data")" = "$before" ] || fail "$1 left something: $(ls "$place/data")"
}

end_program() {
    leave
    expect_stored
    expect_sound
}

start_screen
mount_small "$place/data" 2048
mount_small "$place/program" $(($(stat -c %s "$programs/valtrino") / 1024 + 1024))
for version in jet4 jet3; do
    install_program
    rm -rf "$place/data/"*
    "$programs/valtrino-mdb" sample "--$version" --clients 100 --banks 4 --cheques 0 --bounced 0 \
        "$place/data/automacao.mdb"
    choose_client_and_bank
    expected=
    start_program
    until_window "Valtrino"
    keys alt+m e
    until_window "$entry"
    save_without_room_for_the_journal
    save_without_room_for_the_file
    keys Escape
    until_window "Valtrino"
    end_program

    start_without_room
    choose_a_folder_without_room
    end_program

    fill_disk "$place/data"
    use_tool_without_room compact
    use_tool_without_room salvage
    free_disk "$place/data"
    "$programs/valtrino-mdb" compact "$place/data/automacao.mdb" "$place/data/novo.mdb"
    [ -z "$(find "$place/data" -name '*.ldb' -o -name '*-journal*')" ] || fail "something was left behind"
done
echo "passed"
