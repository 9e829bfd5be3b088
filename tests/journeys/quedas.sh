#!/bin/bash
# The program is killed while a clerk's work pours in, again and again, on a Jet 4 and on a Jet 3 database:
# cheques are entered, one is changed over and over, some are settled, deleted, one is renegotiated, each
# time with more typed ahead than the program can save at once. Each time the next start must ask
# nothing, every row whose saving the windows had shown must be there, and of the work at hand a
# beginning, each step of it whole; an independent reader says so. At the end the screen itself goes:
# then the program ends in good order, with all that was done in the file.
#
#     VALTRINO_QUEDAS=60 tests/journeys/quedas.sh build/dev/bin      so many kills, 10 unless set
source "$(dirname "$0")/journey.sh"

kills=${VALTRINO_QUEDAS:-10}
burst=12                 # cheques of a run typed ahead
steps=(enter_a_run change_one settle_some delete_two renegotiate_one)

# ---- What is in the file

now() { echo "${EPOCHREALTIME/[.,]/}"; }

# The cheques without their entry numbers, all of one client: bank, agency, number and so on.
stored() { rows cheques | cut -d '|' -f 2- | sort; }
other_tables() { for table in bancos cliente_fornecedor semfundos; do rows "$table"; done; }

# cheque <number> <due>: a row as it must be stored.
cheque() { echo "$client|$bank|1234|$1|2026-12-05|$2|1.0000||Gerente|1"; }
number_of() { cut -d '|' -f 4 <<< "$1"; }
by_due_date() { sort -t '|' -k 6,6 <<< "$1"; }
plus() { printf '%s\n' "$1" "$2" | sed '/^$/d' | sort; }
minus() { grep -vxF -e "$2" <<< "$1" || true; }

# later <yyyy-mm-dd> <days>
later() { date -d "$1 + $2 days" +%Y-%m-%d; }
# typed_day <yyyy-mm-dd>: as a clerk types it, day first.
typed_day() { echo "${1:8:2}${1:5:2}${1:0:4}"; }

# What the file may hold after the kill, step by step, and how many steps the windows have confirmed.
begin_steps() {
    states=("$(stored)")
    confirmed=0
}
step_to() { states+=("$1"); }

expect_one_of_the_states() {
    local found
    found=$(stored)
    for ((i = confirmed; i < ${#states[@]}; i++)); do
        [ "$found" != "${states[i]}" ] || return 0
    done
    printf '%s\n' "---- found" "$found" "---- confirmed" "${states[confirmed]}" \
        "---- typed" "${states[-1]}" >&2
    fail "kill $kill ($work, $version): not what the clerk did"
}

# ---- A clerk with quick fingers

quick() { xdotool type --delay 4 -- "$1"; }
quick_fill() {
    for field in "$@"; do
        [ -z "$field" ] || quick "$field"
        xdotool key Return
    done
}

# The journal isn't empty: a save is in the middle of being written.
journal_at_work() {
    local first=
    { IFS= read -r -d '' -n 1 first < "$place/data/automacao.mdb-journal"; } 2> /dev/null || true
    [ -n "$first" ]
}

# Half a second at most, and without another process, which would come too late.
until_a_save_is_written() {
    local end=$((${EPOCHREALTIME/[.,]/} + 500000))
    until journal_at_work || [ "${EPOCHREALTIME/[.,]/}" -gt $end ]; do
        :
    done
}

# Within so many microseconds, at a moment that nobody knows; every other time in the middle of the save
# that comes next.
kill_within() {
    local aimed=$((kill % 2))
    local wait=$(((RANDOM * 32768 + RANDOM) % ($1 / (1 + aimed))))
    {
        sleep "$((wait / 1000000)).$(printf %06d $((wait % 1000000)))"
        [ $aimed = 0 ] || until_a_save_is_written
        kill -9 "$program"
        touch "$place/killed"
    } &
}

# Numbers for cheques, no two alike; due dates likewise, as lists are ordered by them.
number=10000
runs=0
typing=()

# One more cheque of the run that begins with "Vários Cheques" ticked: 30 days after the last.
next_cheque() {
    number=$((number + 1))
    step_to "$(plus "${states[-1]}" "$(cheque $number "$due")")"
    due=$(later "$due" 30)
}

# The keys of the number and of the save are added to those to be typed.
add_number() {
    for ((digit = 0; digit < ${#number}; digit++)); do
        typing+=("${number:digit:1}")
    done
    typing+=(alt+s)
}
add_cheques() {
    for _ in $(seq "$1"); do
        next_cheque
        add_number
    done
}
type_ahead() {
    xdotool key --delay 2 "${typing[@]}"
    typing=()
}

open_entry() {
    keys alt+m e
    until_window "Cadastro de Cheques Recebidos"
}

# The first cheque of a run, saved; the focus is where the next number goes.
begin_run() {
    runs=$((runs + 1))
    due=$(later 2027-01-01 $runs)
    open_entry
    quick_fill "$name" "$bank_name" 1234 $((number + 1)) 05122026 "$(typed_day "$due")" 1,00 Gerente
    keys alt+h           # Vários Cheques
    next_cheque
    keys alt+s
}

# What was typed has been worked off when the list that comes after it is on show.
confirm_all() {
    keys alt+l
    until_window "Localizar Cheque Recebidos"
    confirmed=$((${#states[@]} - 1))
    keys Escape
    until_window "Cadastro de Cheques Recebidos"
}

# The second cheque by due date is brought up from the list.
pick_second() {
    until_window "Localizar Cheque Recebidos"
    xdotool key Return
    quick "$name"
    xdotool key Tab Tab Tab
    keys Down Return Return
    until_window "$1"
}
second_cheque() { by_due_date "${states[-1]}" | sed -n 2p; }

# ---- What is interrupted

enter_a_run() {
    begin_run
    add_cheques 2
    type_ahead
    confirm_all
    xdotool key Return Return Return
    add_cheques $burst
    kill_within $((burst * per_cheque))
    type_ahead
}

# change_to <due>: the next step of the cheque that is on the screen.
change_to() {
    local changed
    changed=$(cheque "$number" "$1")
    step_to "$(plus "$(minus "${states[-1]}" "$row")" "$changed")"
    row=$changed
}

change_one() {
    local row
    open_entry
    keys alt+l
    row=$(second_cheque)
    pick_second "Cadastro de Cheques Recebidos"
    number=$((number + 1))
    due=$(later 2040-01-01 $((kill % 30)))
    quick_fill "" "" "" $number "" "$(typed_day "$due")"
    keys alt+h alt+s
    change_to "$due"
    for _ in $(seq $burst); do
        number=$((number + 1))
        due=$(later "$due" 30)
        change_to "$due"
        add_number
    done
    kill_within $((burst * per_cheque))
    type_ahead
}

settle_some() {
    keys alt+m b
    until_window "Baixa de cheques recebidos"
    xdotool key Return
    quick "$name"
    xdotool key Tab Tab Tab
    while IFS= read -r row; do
        typing+=(space Down)
        step_to "$(minus "${states[-1]}" "$row")"
    done < <(by_due_date "${states[0]}" | head -n $burst)
    type_ahead
    kill_within $((burst * per_cheque))
    keys alt+s
}

ask_to_delete_one() {
    keys alt+l
    step_to "$(minus "${states[-1]}" "$(second_cheque)")"
    pick_second "Cadastro de Cheques Recebidos"
    keys alt+x
    until_window "Exclusão"
}

delete_two() {
    open_entry
    ask_to_delete_one
    keys alt+s
    until_window "Cadastro de Cheques Recebidos"
    ask_to_delete_one
    confirmed=1
    kill_within 1000000
    keys alt+s
}

renegotiate_one() {
    local row due
    due=$(later 2050-01-01 "$kill")
    keys alt+m r
    until_window "Renegociação de cheques"
    keys Return          # the finding has the focus
    row=$(second_cheque)
    pick_second "Renegociação de cheques"
    quick_fill 2 "$(typed_day "$due")"
    step_to "$(plus "$(minus "${states[0]}" "$row")" "$(cheque "$(number_of "$row")" "$due")")"
    kill_within $((2 * per_cheque))
    keys alt+s
}

# ---- Kill after kill

wait_for_the_kill() {
    local status=0
    until_true "the kill" test -e "$place/killed"
    wait "$program" 2> /dev/null || status=$?
    [ $status = 137 ] || fail "ended with status $status before it was killed"
}

# Cheques to work on, and how long the program takes for one.
fill_up() {
    local begun
    begin_steps
    begin_run
    add_cheques $((2 * burst))
    begun=$(now)
    type_ahead
    confirm_all
    per_cheque=$((($(now) - begun) / 2 / burst))
    keys Escape
    until_window "Valtrino"
    confirmed=$((${#states[@]} - 1))
    expect_one_of_the_states
}

nothing_left() { [ -z "$(find "$place/data" -name '*.ldb' -o -name '*-journal*')" ]; }

new_database() {
    rm -rf "$place/data/"*
    "$programs/valtrino-mdb" sample "--$version" --clients 100 --banks 4 --cheques 0 --bounced 5 \
        "$place/data/automacao.mdb"
    choose_client_and_bank
    others=$(other_tables)
}

# What was deleted a moment ago is written when the screen goes.
lose_the_screen() {
    local status=0
    begin_steps
    open_entry
    ask_to_delete_one
    keys alt+s
    until_window "Cadastro de Cheques Recebidos"
    confirmed=1
    kill "$screen"
    until_true "the program's end" not kill -0 "$program"
    wait "$program" || status=$?
    [ $status = 1 ] || fail "without a screen it ended with status $status: $(cat "$place/output")"
    expect_one_of_the_states
    nothing_left || fail "something was left behind without a screen"
    "$programs/valtrino-mdb" check "$place/data/automacao.mdb"
}

start_screen
install_program
hits=0
kill=0
for version in jet4 jet3; do
    new_database
    start_program
    until_window "Valtrino"
    fill_up
    for _ in $(seq $(((kills + 1) / 2))); do
        kill=$((kill + 1))
        work=${steps[kill % ${#steps[@]}]}
        [ "$(stored | wc -l)" -ge $((burst + 2)) ] || fill_up
        rm -f "$place/killed"
        begin_steps
        $work
        wait_for_the_kill
        [ -s "$place/data/automacao.ldb" ] || fail "no lock file: the program wasn't killed"
        if journal_at_work; then
            hits=$((hits + 1))
        fi
        start_program
        until_window "Valtrino"
        expect_one_of_the_states
        [ "$(other_tables)" = "$others" ] || fail "kill $kill: other tables have changed"
        "$programs/valtrino-mdb" check "$place/data/automacao.mdb" > "$place/check" ||
            fail "kill $kill: $(cat "$place/check")"
    done
    [ "$version" = jet4 ] || break
    leave
    nothing_left || fail "something was left behind"
done
lose_the_screen
echo "$kill kills, $hits of them into a save being written"
echo "passed"
