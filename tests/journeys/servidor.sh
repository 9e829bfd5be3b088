#!/bin/bash
# Two programs at once on a server, keyboard only: of two clerks who change one cheque the second is told,
# and both are stored as an independent reader finds them; what is settled elsewhere changes the figures
# of the main window without a key. With "all" as its third word, the days of the other journeys on a
# server too:
#
#     tests/journeys/servidor.sh build/dev/bin '' all
source "$(dirname "$0")/stations.sh"
needs_server

rests() {
    local seen
    seen=$(look "$1")
    sleep 0.5
    looks "$1" "$seen"
}

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
    until_true "the figures without the cheque" not looks "$window" "$seen"
    echo "seen after $((($(date +%s%N) - before) / 1000000)) ms"
    picture servidor-depois
}

start_screen
install_program
new_shop server --clients 100 --banks 4 --cheques 0 --bounced 0
choose_client_and_bank
start_two_stations
work_on_the_same_cheque servidor-conflito
at "$first" "$entry"
keys Escape
end_station "$second" "$entry"
settle_elsewhere
end_station "$first" "Valtrino"
expect_sound
echo "passed"

if [ "${3:-}" = all ]; then
    # shellcheck disable=SC2013,SC2016
    for journey in $(grep -l 'for by in \$kept_by' "$(dirname "$0")"/*.sh); do
        echo "== $(basename "$journey" .sh)"
        VALTRINO_KEPT_BY=server "$journey" "$programs" "$pictures" || [ $? = 77 ]
    done
fi
