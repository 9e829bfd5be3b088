#!/bin/bash
# A purge made by mistake is taken back, keyboard only, on a Jet 4 and on a Jet 3 database: F8 shows it in
# the history, and undoing it brings every cheque back with its number. An independent reader then finds
# the file's own tables as they were before, and the purge and its undoing in the history.
source "$(dirname "$0")/journey.sh"

operations() {
    rows valtrino_historico | awk -F"|" '{ print $5 }' | tr -d "\"" | sort | uniq -c | awk '{ print $2, $1 }'
}

start_screen
install_program
for by in $kept_by; do
    new_shop "$by" --clients 20 --banks 4 --cheques 60 --bounced 5
    all=$(rows cheques | sort)
    clients=$(rows cliente_fornecedor | sort)
    start_program
    until_window "Valtrino"
    keys alt+u a
    until_window "Apagar Cheques"
    fill 01011990 31122050 ""
    keys alt+e
    until_window "Mensagem"
    keys Return
    until_window "Apagar Cheques"
    left=$(rows cheques | wc -l)
    [ "$left" -lt 10 ] || fail "$left cheques are left"

    keys F8
    until_window "Histórico"
    picture FrmHistorico-expurgo active
    keys alt+o
    typed "expurgo"
    keys Return Tab Tab Tab Tab
    keys alt+f
    until_window "Desfazer"
    picture FrmHistorico-pergunta
    keys alt+s
    until_window "Histórico"
    expect_rows cheques "$all"
    expect_rows cliente_fornecedor "$clients"
    picture FrmHistorico active
    gone=$((60 - left))
    [ "$(operations)" = "$(printf 'desfazer %s\nexpurgo %s' "$gone" "$gone")" ] ||
        fail "in the history: $(operations)"

    keys alt+f
    until_window "Desfazer"
    question=$(xdotool getactivewindow)
    keys alt+s
    until_true "the question to go" not active_is "$question"
    until_window "Desfazer"              # the refusal
    keys Return
    until_window "Histórico"
    expect_rows cheques "$all"
    keys Escape
    until_window "Apagar Cheques"
    keys Escape
    leave
    expect_sound
done
echo "passed"
