#!/bin/bash
# A primary that falls in the middle of the day, and its standby that takes over, three times, with two
# clerks at work by keyboard: one has typed half a cheque, the other is saving. What was typed is kept
# and saved, what became of the save in the middle is told or needs no telling, and an independent reader
# finds each cheque once. Not in ./test, as it takes too long:
#
#     tests/journeys/troca.sh build/dev/bin [docs]
source "$(dirname "$0")/stations.sh"
needs_server

# ---- The two servers

primary=$place/server
standby=$place/standby

stopped= # a process of theirs

at_primary() { psql -At -h "$primary" -U dono -d postgres -c "$1"; }
at_standby() { psql -At -h "$standby" -U dono -d postgres -c "$1"; }
streams() { [ "$(at_primary "select state from pg_stat_replication")" = streaming ]; }
keeps_up() { [ "$(at_primary "select replay_lsn = pg_current_wal_lsn() from pg_stat_replication")" = t ]; }

# The other server, or what is left of it, becomes a copy of the one that is worked on.
make_standby() {
    rm -rf "$standby"
    mkdir -m 777 "$standby"
    "${as_clerk[@]}" "$postgres_programs/pg_basebackup" -h "$primary" -U dono -D "$standby/data" \
        --checkpoint=fast --write-recovery-conf --no-sync
    primary_process=$postgres
    start_postgres "$standby"
    until_true "the standby" streams
}

primary_falls() {
    kill -QUIT "$primary_process"
    wait "$primary_process" 2> /dev/null || true
}
standby_takes_over() {
    [ -z "$stopped" ] || kill -CONT "$stopped" 2> /dev/null || true
    stopped=
    at_standby 'select pg_promote()' > /dev/null
    local fallen=$primary
    primary=$standby
    standby=$fallen
}

# ---- What keeps a save from its end

# keep_from_writing: a save that changes cheques stands in its middle.
keep_from_writing() {
    until_true "the standby to have all so far" keeps_up
    psql -q "$server" -c 'begin; lock table valtrino.cheques in exclusive mode; select pg_sleep(60)' \
        > /dev/null 2>&1 &
    helpers+=($!)
    until_true "the lock" is_told "select 1 from pg_locks where mode = 'ExclusiveLock' and granted
        and relation = (select oid from pg_class where relname = 'cheques')"
}
is_told() { [ -n "$(psql -At "$server" -c "$1")" ]; }
waits_for_the_lock() { is_told "select 1 from pg_locks where not granted"; }

# keep_from_copying <walsender|walreceiver>: a save stands before its end, which the standby has to have
# too; it may have got it already, or not.
keep_from_copying() {
    local of=$postgres
    [ "$1" = walreceiver ] || of=$primary_process
    at_primary "alter system set synchronous_standby_names = '*'" > /dev/null
    at_primary "select pg_reload_conf()" > /dev/null
    until_true "the standby to be waited for" is_told "select 1 from pg_stat_replication
        where sync_state = 'sync'"
    until_true "the standby to have all so far" keeps_up
    stopped=$(pgrep -P "$of" -f "$1")
    kill -STOP "$stopped"
}
waits_for_the_copy() { is_told "select 1 from pg_stat_activity where wait_event = 'SyncRep'"; }

# ---- The two clerks

# Of a server that has fallen the next one gives numbers further on, so that those aren't compared.
expect_cheques() {
    local stored=()
    for number in "$@"; do
        stored+=("$(cheque "" "$number")")
    done
    until_true "the cheques $*, instead of $(rows cheques)" cheques_are "$(printf '%s\n' "${stored[@]}")"
}
cheques_are() { [ "$(rows cheques | sed 's/^[0-9]*//' | sort)" = "$1" ]; }

# type_half <number>: the first clerk's cheque, as far as that.
type_half() {
    at "$first" "$entry"
    fill "$name" "$bank_name" 1234
    typed "$1"
}
# While there is no server: what needs one waits, and says so; what is typed meanwhile comes after it.
type_the_rest() {
    at "$first" "$entry"
    fill "" 05122026 10012027 10,00
    sleep 1.5
    picture "$1-digitado"
    typed Gerente
}
save_the_first() {
    at "$first" "$entry"
    picture "$1-depois"
    keys alt+s
}

open_settling() {
    keys Escape
    at "$second" "Valtrino"
    keys alt+m b
    until_window "$settling"
    to_the_list
}

# Nobody takes over for longer than a save waits: its clerk is told, and saves what he has typed later.
enter_one_in_the_middle() {
    open_entry "$first"
    type_half 601
    open_entry "$second"
    fill_cheque 701
    keep_from_writing
    keys alt+s
    until_true "the save in its middle" waits_for_the_lock
    primary_falls
    until_window "Mensagem"          # "... ainda não voltou. Tente de novo daqui a pouco."
    picture troca-gravando
    type_the_rest troca-gravando
    standby_takes_over
    save_the_first troca-gravando
    expect_cheques 601
    at "$second" "Mensagem"
    keys Return
    until_window "$entry"
    keys alt+s
    expect_cheques 601 701
}

# The standby has got the end of the save, which the clerk is told nothing of: it is done.
settle_two_at_the_end() {
    make_standby
    type_half 602
    at "$second" "$entry"
    open_settling
    keys space Down space
    keep_from_copying walreceiver
    keys alt+s
    until_true "the save before its end" waits_for_the_copy
    primary_falls
    sleep 1.5
    picture troca-baixando
    type_the_rest troca-baixando
    standby_takes_over
    save_the_first troca-baixando
    expect_cheques 602
    at "$second" "$settling"
}

# It hasn't, and the save has gone with the primary.
settle_one_too_early() {
    make_standby
    type_half 603
    at "$second" "$settling"
    open_settling
    keys space
    keep_from_copying walsender
    keys alt+s
    until_true "the save before its end" waits_for_the_copy
    primary_falls
    type_the_rest troca-perdida
    standby_takes_over
    at "$second" "Mensagem"          # "... Ela não foi feita: grave de novo."
    picture troca-perdida
    keys Return
    until_window "$settling"
    save_the_first troca-perdida
    expect_cheques 602 603
    at "$second" "$settling"
    keys alt+s
    expect_cheques 603
}

settling="Baixa de cheques recebidos"
start_screen
install_program
new_shop server --clients 100 --banks 4 --cheques 0 --bounced 0
server+=",$standby&target_session_attrs=read-write"
printf '%s\r\n' "$server" > "$place/program/init.ini"
make_standby
choose_client_and_bank
start_two_stations
enter_one_in_the_middle
settle_two_at_the_end
settle_one_too_early
end_station "$first" "$entry"
end_station "$second" "$settling"
expect_cheques 603
"$programs/valtrino-mdb" check "$server"
echo "passed"
