#!/bin/bash
# Two stations at work in one file, and a program with other rules beside them: what one saves the other
# finds; of two clerks who change one cheque the second is told; while the foreign program is in the file
# the status bar says so and a save is refused, and tried again when it has left; a station that has to
# wait for another keeps its window painted, saves as soon as it can, and says so if it can't. What was
# refused stays in the window. An independent reader finds in the file just what was saved.
source "$(dirname "$0")/stations.sh"

if ! command -v python3 > /dev/null; then
    echo "skipped: python3 is not installed"
    exit 77
fi

foreign_user=0x10000007  # the byte of user 7, without the mark that our own programs set beside it
writing=0x70001001       # the byte that a station holds while it writes

# hold <byte>: another program takes a byte of the lock file, and gives it back with let_go.
hold() {
    mkfifo "$place/hold"
    python3 - "$place/data/automacao.ldb" "$1" 3< "$place/hold" > "$place/held" <<'PYTHON' &
import fcntl, os, struct, sys
file = os.open(sys.argv[1], os.O_RDWR | os.O_CREAT)
byte = int(sys.argv[2], 0)
fcntl.fcntl(file, fcntl.F_OFD_SETLK, struct.pack("hhqqi", fcntl.F_WRLCK, os.SEEK_SET, byte, 1, 0))
if byte < 0x20000000:
    os.pwrite(file, b"CAIXA2\0".ljust(32) + b"Maria\0".ljust(32), (byte - 0x10000001) * 64)
print("held", flush=True)
os.read(3, 1)
PYTHON
    helpers+=($!)
    exec 4> "$place/hold"
    until_true "the other program" grep -q held "$place/held"
}
let_go() {
    exec 4>&-
    rm "$place/hold"
}

# The place in the status bar where "Somente consulta" comes and goes.
read_only_sign() { import -window root -crop 170x22+1060+746 -depth 8 rgb:- | md5sum; }
sign_is() { [ "$(read_only_sign)" = "$1" ]; }

save_beside_a_foreign_program() {
    local without
    without=$(read_only_sign)
    fill_cheque 504
    hold $foreign_user
    until_true "the sign in the status bar" not sign_is "$without"
    keys alt+s
    refused estacoes-outro-programa
    expect_cheques "$(cheque 1 503)"
    let_go
    until_true "the sign to go" sign_is "$without"
    keys alt+s
    expect_cheques "$(cheque 1 503)" "$(cheque 2 504)"
}

# What has been out of the screen must be painted anew, in the middle of the wait.
expect_painted() {
    local window seen
    window=$(xdotool getactivewindow)
    eval "$(xdotool getwindowgeometry --shell "$window")"
    seen=$(look "$window")
    xdotool windowmove --sync "$window" 1200 "$Y"
    xdotool windowmove --sync "$window" "$X" "$Y"
    until_true "the window to be painted while it waits" looks "$window" "$seen"
}

wait_for_another_station() {
    fill_cheque 505
    hold $writing
    keys alt+s
    sleep 1
    picture estacoes-espera
    expect_painted
    title_is "$entry" || fail "the wait was over at once"
    let_go
    expect_cheques "$(cheque 1 503)" "$(cheque 2 504)" "$(cheque 3 505)"

    fill_cheque 506
    hold $writing
    keys alt+s
    refused estacoes-ocupado
    let_go
    expect_cheques "$(cheque 1 503)" "$(cheque 2 504)" "$(cheque 3 505)"
    keys alt+s
    expect_cheques "$(cheque 1 503)" "$(cheque 2 504)" "$(cheque 3 505)" "$(cheque 4 506)"
}

start_beside_a_foreign_program() {
    hold $foreign_user
    start_program
    until_window "Mensagem"
    picture estacoes-inicio
    keys Return
    leave
    let_go
}

start_screen
install_program
"$programs/valtrino-mdb" sample --clients 100 --banks 4 --cheques 0 --bounced 0 "$place/data/automacao.mdb"
choose_client_and_bank
start_two_stations
work_on_the_same_cheque estacoes-conflito
save_beside_a_foreign_program
wait_for_another_station
end_station "$first" "$entry"
end_station "$second" "$entry"
[ -z "$(find "$place/data" -name '*.ldb' -o -name '*-journal*')" ] || fail "something was left behind"
start_beside_a_foreign_program
"$programs/valtrino-mdb" check "$place/data/automacao.mdb"
echo "passed"
