# Sourced by the journeys of two programs at once, whoever keeps their data.
source "$(dirname "$0")/journey.sh"

entry="Cadastro de Cheques Recebidos"

# cheque <lancamento> <number>: a row as it must be stored.
cheque() { echo "$1|$client|$bank|1234|$2|2026-12-05|2027-01-10|10.0000||Gerente|1"; }
expect_cheques() { expect_rows cheques "$(printf '%s\n' "$@")"; }

start_two_stations() {
    start_program
    first=$program
    until_true "the first station" is_ready "$first"
    start_program
    second=$program
    until_true "the second station" is_ready "$second"
}
# at <station> <title>: goes to the newest window of a program.
at() {
    xdotool windowactivate --sync "$(xdotool search --onlyvisible --pid "$1" | tail -n 1)"
    until_window "$2"
}
end_station() {
    at "$1" "$2"
    [ "$2" = Valtrino ] || { keys Escape && at "$1" "Valtrino"; }
    leave "$1"
}

open_entry() {
    at "$1" "Valtrino"
    keys alt+m e
    until_window "$entry"
}
fill_cheque() { fill "$name" "$bank_name" 1234 "$1" 05122026 10012027 10,00 Gerente; }
find_first() {
    keys alt+l
    until_window "Localizar Cheque Recebidos"
    to_the_list
    keys Home Return Return
    until_window "$entry"
}
# Through every field, the value too, whose leaving sums up the client's cheques.
change_number() {
    fill "" "" "" "$1" "" "" "" "" ""
    keys alt+s
}
refused() {
    until_window "Mensagem"
    picture "$1"
    keys Return
    until_window "$entry"
}

# work_on_the_same_cheque <picture>: the second who changes it is told, and nothing of his is stored.
work_on_the_same_cheque() {
    open_entry "$first"
    fill_cheque 501
    keys alt+s
    expect_cheques "$(cheque 1 501)"
    find_first
    open_entry "$second"
    find_first
    change_number 502
    expect_cheques "$(cheque 1 502)"
    at "$first" "$entry"
    change_number 503
    refused "$1"
    expect_cheques "$(cheque 1 502)"
    find_first
    change_number 503
    expect_cheques "$(cheque 1 503)"
}

look() { import -window "$1" -depth 8 rgb:- | md5sum; }
looks() { [ "$(look "$1")" = "$2" ]; }
