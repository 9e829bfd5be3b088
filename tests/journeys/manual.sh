#!/bin/bash
# The first day as the manual tells it (docs/manual/primeiro-dia.md), step by step and key by key, in the
# sample shop: what it says is on show is on show, and an independent reader finds what it says is stored.
# Then the manual itself: F1 opens the page of the window in front, is searched, gone back in, left.
source "$(dirname "$0")/journey.sh"

today=$(date +%F)
later() { date -d "$today $1 days" +%F; }

# says <text>: the manual's page tells of it.
page=$(dirname "$0")/../../docs/manual/primeiro-dia.md
says() { grep -qF -- "$1" "$page" || fail "the manual doesn't say: $1"; }

of_marta() { rows cheques | awk -F'|' -v client="$client" '$2 == client { print $5 "|" $6 "|" $7 "|" $8 }'; }
marta_has() { [ "$(of_marta | sort)" = "$1" ]; }
expect_of_marta() { until_true "Marta's cheques: $1" marta_has "$1"; }

register_the_bank() {
    says 'Tecle *Alt+A* e depois *B*'
    keys alt+a b
    until_window "Cadastro de Bancos"
    keys alt+v
    says 'Digite o código `850`'
    fill 850
    typed "Banco do Cais"
    keys alt+s
    until_true "the bank" eval "rows bancos | grep -q '|850|Banco do Cais$'"
    bank=$(rows bancos | awk -F'|' '$2 == 850 { print $1 }')
    keys Escape
    until_window "Valtrino"
}

register_the_client() {
    keys alt+a c
    until_window "Cadastro Cliente"
    keys alt+v
    typed "Marta Ramos"
    says 'Tecle *Alt+I* para ir ao limite de crédito. Digite `500,00`.'
    keys alt+i
    typed "500,00"
    keys alt+s
    until_true "the client" eval "rows cliente_fornecedor | grep -q '|Marta Ramos|1|'"
    client=$(rows cliente_fornecedor | awk -F'|' '$2 == "Marta Ramos" { print $1 }')
    keys Escape
    until_window "Valtrino"
}

enter_three() {
    keys alt+m e
    until_window "Cadastro de Cheques Recebidos"
    fill "Marta Ramos" "Banco do Cais" 0042 000101 "" "" "150,00"
    says 'Tecle *Alt+H*, que marca *Vários Cheques*. Tecle *Alt+S*.'
    keys alt+h alt+s
    first="000101|$today|$(later 30)|150.0000"
    expect_of_marta "$first"
    typed 000102
    keys alt+s
    second="000102|$today|$(later 60)|150.0000"
    expect_of_marta "$(printf '%s\n' "$first" "$second")"
    typed 000103
    keys alt+s
    third="000103|$today|$(later 90)|150.0000"
    all=$(printf '%s\n' "$first" "$second" "$third")
    expect_of_marta "$all"
    keys Escape
    until_window "Valtrino"
}

pass_the_limit() {
    says 'somam R$ 510,00, e o limite é de R$ 500,00'
    keys alt+m e
    until_window "Cadastro de Cheques Recebidos"
    fill "Marta Ramos" "Banco do Cais" "" 000104 "" "" "60,00"
    until_window "Limite de crédito"
    picture manual-limite root
    keys Return
    until_window "Cadastro de Cheques Recebidos"
    keys Escape
    until_window "Mensagem"
    keys alt+s                  # Sim
    until_window "Valtrino"
    expect_of_marta "$all"
}

settle_the_first() {
    keys alt+m b
    until_window "Baixa de cheques recebidos"
    keys alt+n
    typed "Marta Ramos"
    keys Tab Tab Tab space
    picture manual-baixa active
    keys alt+s
    expect_of_marta "$(printf '%s\n' "$second" "$third")"
    keys Escape
    until_window "Valtrino"
}

undo_it() {
    keys F8
    until_window "Histórico"
    keys Tab Tab Tab Tab Tab Tab
    picture manual-historico active
    keys alt+f
    until_window "Desfazer"
    keys alt+s                  # Sim
    until_window "Histórico"
    expect_of_marta "$all"
    keys Escape
    until_window "Valtrino"
}

see_the_report() {
    says 'três cheques e o total, R$ 450,00'
    keys alt+r c
    until_window "Relatório de Cheques Recebidos"
    typed "Marta Ramos"
    keys alt+i
    report="Valtrino - [Relatório de Cheques]"
    until_window "$report"
    save_as ctrl+shift+e "Salvar como CSV" "$place/marta.csv"
    until_window "$report"
    [ "$(grep -c '150,00' "$place/marta.csv")" = 3 ] || fail "the report: $(cat "$place/marta.csv")"
    picture manual-relatorio
}

read_the_manual() {
    keys F1
    until_window "Ajuda"
    picture manual-ajuda-relatorio active
    keys Escape
    until_window "$report"
    keys Escape
    until_window "Relatório de Cheques Recebidos"
    keys Escape
    until_window "Valtrino"
    keys F7
    until_window "Agenda de vencimentos"
    keys F1
    until_window "Ajuda"
    picture manual-ajuda-agenda active
    keys ctrl+f
    typed "desfazer baixa"
    keys Return
    sleep 0.3
    picture manual-ajuda-procura active
    keys Tab Return
    picture manual-ajuda-achado active
    keys alt+v alt+v Escape
    until_window "Agenda de vencimentos"
    keys Escape
    until_window "Valtrino"
}

start_screen
install_program
"$programs/valtrino-mdb" sample --today "$today" "$place/data/automacao.mdb" > /dev/null
start_program
until_window "Valtrino"
register_the_bank
register_the_client
enter_three
pass_the_limit
settle_the_first
undo_it
see_the_report
read_the_manual
leave
"$programs/valtrino-mdb" check "$place/data/automacao.mdb" > /dev/null || fail "the file"
echo "passed"
