#!/bin/bash
# The agenda by keyboard only, on a Jet 4 and on a Jet 3 database: the cheques that fall due around today
# are listed and ticked, saved as a calendar and as a report's rows, and those that are due put on a
# deposit slip; one is opened in the entry. What all that must show is worked out anew from the rows that
# an independent reader finds in the file, in which nothing has changed afterwards.
source "$(dirname "$0")/journey.sh"

if ! command -v pdftotext > /dev/null; then
    echo "skipped: pdftotext is not installed"
    exit 77
fi

today=$(date +%F)
first=$(date -d "$today - 45 days" +%F)
last=$(date -d "$today + 60 days" +%F)

# typed_day <yyyy-mm-dd>: as a clerk types it, day first.
typed_day() { typed "${1:8:2}${1:5:2}${1:0:4}"; }

# The days of the calendar, in its words: "20261122 2 1.234,56".
days_expected() {
    cheques_due "$first" "$last" | cut -d ' ' -f 1 | sort -u | while read -r day; do
        echo "${day//-/} $(cheques_due "$day" "$day" | in_words)"
    done
}
days_saved() {
    tr -d '\r\\' < "$place/dias.ics" | awk '
        /^DTSTART/ { day = substr($0, length($0) - 7) }
        /^SUMMARY/ { print day, $2, $NF }'
}

list_the_period() {
    keys F7
    until_window "Agenda de vencimentos"
    typed De
    keys Return
    typed_day "$first"
    keys Return
    typed_day "$last"
    keys Return
    picture agenda active
}

compare_the_calendar() {
    save_as alt+a "Salvar o calendário" "$place/dias.ics"
    until_window "Salvar o calendário"      # "O calendário foi salvo em ..."
    keys Return
    until_window "Agenda de vencimentos"
    diff <(days_expected) <(days_saved) || fail "the sums per day"
    [ "$(days_saved | wc -l)" -gt 10 ] || fail "too few days to compare"
    ! grep -v $'\r$' "$place/dias.ics" || fail "a line without CR LF"
}

# The list as it was saved: each day's cheques, and below them, with no number, their sum.
listed() { tail -n +2 "$place/lista.csv" | tr -d '\r'; }

compare_the_list() {
    keys alt+m alt+i
    until_window "Cheques por vencimento"
    picture agenda-impressa active
    save_as ctrl+shift+e "Salvar como CSV" "$place/lista.csv"
    until_window "Cheques por vencimento"
    save_as ctrl+s "Salvar como PDF" "$place/lista.pdf"
    until_window "Cheques por vencimento"
    keys Escape
    until_window "Agenda de vencimentos"
    diff <(cheques_due "$first" "$last" | sed 's/\([0-9]*\)-\([0-9]*\)-\([0-9]*\)/\3\/\2\/\1/; s/00$//' |
        sort) <(listed | awk -F';' '$1 != "" { sub(",", ".", $9); print $6, $9 }' | sort) ||
        fail "the rows of the list"
    diff <(days_expected | sed 's/\.//g') <(listed | awk -F';' '$1 == "" {
        split($2, sum, " "); split($6, day, "/"); print day[3] day[2] day[1], sum[2], $9 }') ||
        fail "the sums within the list"
    read -r count sum < <(cheques_due "$first" "$last" | in_words)
    pdftotext -layout "$place/lista.pdf" - | tr -s ' ' > "$place/lista.txt"
    grep -q "Cheques: $count Total: $sum" "$place/lista.txt" || fail "the list's sum $sum of $count"
    grep -q "Marcados: $count cheques, R\$ $sum" "$place/lista.txt" || fail "the sum of the ticked"
}

compare_the_slip() {
    keys alt+d
    until_window "Borderô"          # some aren't due yet
    picture agenda-fora active
    keys Return
    until_window "Novo borderô"
    typed "$bank_name"
    picture bordero active
    keys Return Return Return       # over the account, on Imprimir
    until_window "Borderô de depósito"
    picture bordero-impresso active
    save_as ctrl+s "Salvar como PDF" "$place/bordero.pdf"
    until_window "Borderô de depósito"
    keys Escape
    until_window "Agenda de vencimentos"
    pdftotext -layout "$place/bordero.pdf" - | tr -s ' ' > "$place/bordero.txt"
    read -r count sum < <(cheques_due "$first" "$today" | in_words)
    grep -q "Cheques: $count Total: $sum" "$place/bordero.txt" || fail "the slip's sum $sum of $count"
    grep -q "Depositado em: $bank_name" "$place/bordero.txt" || fail "the slip's bank"
    grep -q "Assinatura" "$place/bordero.txt" || fail "no place for the signature"
}

open_a_cheque() {
    keys alt+o Tab Tab
    keys Return
    until_window "Cadastro de Cheques Recebidos"
    picture agenda-cheque active
    keys F8
    until_window "Histórico"
    keys Escape
    until_window "Cadastro de Cheques Recebidos"
    keys Escape
    until_window "Agenda de vencimentos"
}

start_screen
install_program
for by in $kept_by; do
    rm -f "$place"/*.{ics,csv,pdf}
    new_shop "$by" --today "$today" --clients 30 --banks 5 --cheques 700 --bounced 5
    IFS='|' read -r _ _ bank_name < <(rows bancos | LC_ALL=C grep -E '^[ -~]+$' | sed q)
    before=$(rows cheques | sort)
    start_program
    until_window "Valtrino"
    list_the_period
    compare_the_calendar
    compare_the_list
    compare_the_slip
    open_a_cheque
    keys Escape
    leave
    expect_rows cheques "$before"
    expect_sound
done
echo "passed"
