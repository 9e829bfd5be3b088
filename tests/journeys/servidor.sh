#!/bin/bash
# Two programs at once on a server, keyboard only: of two clerks who change one cheque the second is told,
# and both are stored as an independent reader finds them; what is settled elsewhere changes the figures
# of the main window without a key. With "all" as its third word, the days of the other journeys on a
# server too:
#
#     tests/journeys/servidor.sh build/dev/bin '' all
source "$(dirname "$0")/journey.sh"
needs_server

entry="Cadastro de Cheques Recebidos"

# cheque <number>: the row as it must be stored.
cheque() { echo "1|$client|$bank|1234|$1|2026-12-05|2027-01-10|10.0000||Gerente|1"; }

# at <station> <title>: goes to the newest window of a program.
at() {
    xdotool windowactivate --sync "$(xdotool search --onlyvisible --pid "$1" | tail -n 1)"
    until_window "$2"
}
find_the_cheque() {
    at "$1" "$2"
    [ "$2" = "$entry" ] || { keys alt+m e && until_window "$entry"; }
    keys alt+l
    until_window "Localizar Cheque Recebidos"
    to_the_list
    keys Home Return Return
    until_window "$entry"
}
change_number() {
    fill "" "" "" "$1" "" "" "" "" ""
    keys alt+s
}

work_on_the_same_cheque() {
    at "$first" "Valtrino"
    keys alt+m e
    until_window "$entry"
    fill "$name" "$bank_name" 1234 501 05122026 10012027 10,00 Gerente
    keys alt+s
    expect_rows cheques "$(cheque 501)"
    find_the_cheque "$first" "$entry"
    find_the_cheque "$second" "Valtrino"
    change_number 502
    expect_rows cheques "$(cheque 502)"
    at "$first" "$entry"
    change_number 503
    until_window "Mensagem"      # another has changed it: nothing is stored
    picture servidor-conflito
    keys Return
    until_window "$entry"
    expect_rows cheques "$(cheque 502)"
    find_the_cheque "$first" "$entry"
    change_number 503
    expect_rows cheques "$(cheque 503)"
    keys Escape
}

end_station() {
    at "$1" "$2"
    [ "$2" = Valtrino ] || { keys Escape && at "$1" "Valtrino"; }
    keys alt+a s
    program=$1
    expect_end 0
}

look() { import -window "$1" -depth 8 rgb:- | md5sum; }
rests() {
    local seen
    seen=$(look "$1")
    sleep 0.5
    [ "$(look "$1")" = "$seen" ]
}
looks_other() { [ "$(look "$1")" != "$2" ]; }

# A cheque in hand goes, at another station of another maker.
settle_elsewhere() {
    local window seen before
    at "$first" "Valtrino"
    window=$(xdotool getactivewindow)
    until_true "the figures" rests "$window"
    seen=$(look "$window")
    picture servidor-antes
    before=$(date +%s%N)
    psql -q "$server" -c 'delete from valtrino.cheques'
    until_true "the figures without the cheque" looks_other "$window" "$seen"
    echo "seen after $((($(date +%s%N) - before) / 1000000)) ms"
    picture servidor-depois
}

start_screen
install_program
new_shop server --clients 100 --banks 4 --cheques 0 --bounced 0
choose_client_and_bank
start_program
first=$program
until_true "the first station" is_ready "$first"
start_program
second=$program
until_true "the second station" is_ready "$second"
work_on_the_same_cheque
end_station "$second" "$entry"
settle_elsewhere
end_station "$first" "Valtrino"
expect_sound
echo "passed"

if [ "${3:-}" = all ]; then
    for journey in cheques painel agenda apagar historico semfundos; do
        echo "== $journey"
        VALTRINO_KEPT_BY=server "$(dirname "$0")/$journey.sh" "$programs" "$pictures"
    done
fi
