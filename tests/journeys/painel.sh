#!/bin/bash
# The day at a glance, on a Jet 4 and on a Jet 3 database, as it is seen and heard: its figures are the
# sums that an independent reader finds in the file, each opens its list by keys, and what another station
# settles is told here without a key. That station has put its panel away, and finds it so.
source "$(dirname "$0")/journey.sh"

today=$(date +%F)
day() { date -d "$today $1 days" +%F; }

# said <count> <sum>: "2 cheques, R$ 1.234,56", as an expression.
said() {
    local word=cheques
    [ "$1" != 1 ] || word=cheque
    echo "$1 $word, R\\$ $2"
}
due() { cheques_due "$1" "$2" | in_words; }
bounced() { rows semfundos | LC_ALL=C awk -F'|' '{ print "-", $7 }' | in_words; }
in_hand() { rows cheques | LC_ALL=C awk -F'|' '{ print "-", $8 }' | in_words; }

# While it is being made known to the readers the program has no ear for keys.
reach_the_panel() {
    for _ in $(seq 100); do
        keys Tab
        sleep 0.2
        heard_since 'focus push button "Vencem hoje: .*cheque.*": .*' && return
    done
    return 1
}

# figure <caption> <count> <sum>
figure() { until_heard "focus push button \"$1: $(said "$2" "$3")\": .*"; }

compare_the_figures() {
    # shellcheck disable=SC2046  # each prints a count and a sum
    {
        figure "Vencem hoje" $(due "$today" "$today")
        keys Tab
        figure "Próximos 7 dias" $(due "$today" "$(day +6)")
        keys Tab
        figure "Atrasados" $(due 0000-00-00 "$(day -1)")
        keys Tab
        figure "Sem fundos em aberto" $(bounced)
    }
}

open_the_lists() {
    keys Return
    until_window "Lançamento de cheques sem fundos"
    keys Escape
    until_window "Valtrino"
    keys Tab Tab
    until_heard 'focus .* "Vencem por dia, em 30 dias": .*'
    keys Right
    # shellcheck disable=SC2046
    until_heard "text .* \"Vencem por dia, em 30 dias\": $(date -d "$(day +1)" +%d/%m/%Y): $(
        said $(due "$(day +1)" "$(day +1)"))"
    keys Return
    until_window "Agenda de vencimentos"
    picture painel-agenda
    keys Escape
    until_window "Valtrino"
}

# Another station, whose clerk sees and hears nothing of a panel, settles the client's first cheque.
another_station_settles() {
    mkdir -p "$place/other/Valtrino"
    printf '[MDICheques]\npainel=false\n' > "$place/other/Valtrino/Valtrino.ini"
    env -u QT_LINUX_ACCESSIBILITY_ALWAYS_ON DBUS_SESSION_BUS_ADDRESS= XDG_CONFIG_HOME="$place/other" \
        "$place/program/valtrino" > "$place/other/output" 2>&1 &
    other=$!
    until_true "the other station" is_ready "$other"
    until_window "Valtrino"
    picture painel-oculto active
    keys alt+m b
    until_window "Baixa de cheques recebidos"
    to_the_list
    keys Home space alt+s
    until_true "the settlement" one_is_settled
    keys Escape
    leave "$other"
    [ ! -s "$place/other/output" ] || fail "the other station printed: $(cat "$place/other/output")"
}
one_is_settled() { [ "$(rows cheques | wc -l)" = "$((stored - 1))" ]; }

needs_hearing
start_screen
start_hearing
install_program
for by in $kept_by; do
    new_shop "$by" --today "$today" --clients 100 --banks 5 --cheques 900 --bounced 9
    choose_client_and_bank
    stored=$(rows cheques | wc -l)
    start_program
    until_window "Valtrino"
    until_true "the panel" reach_the_panel
    picture MDICheques
    compare_the_figures
    open_the_lists
    another_station_settles
    # shellcheck disable=SC2046
    until_heard "text label \"Cheques em mãos\": Em mãos: $(said $(in_hand))"
    leave
    expect_sound
done
echo "passed"
