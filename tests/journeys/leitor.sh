#!/bin/bash
# What a clerk hears who doesn't see the screen: the program tells a desktop's screen reader where the
# focus is and what for, what has been typed and completed, the row that is come to and its tick, the
# page of a report and what has become of it. What is told is taken from the readers' own bus.
source "$(dirname "$0")/journey.sh"

# opens <title> <keys>: while a window is being made known to the readers the program has no ear for keys,
# for some seconds on a machine that does much else.
opens() {
    local title=$1
    shift
    keys "$@"
    for _ in $(seq 50); do
        title_is "$title" && return
        sleep 0.1
    done
    keys Escape Escape
    return 1
}
by_keys() {
    until_true "the keys for $1" opens "$@"
    until_window "$1"
}

needs_hearing
start_screen
start_hearing
install_program
"$programs/valtrino-mdb" sample "$place/data/automacao.mdb" > /dev/null
choose_client_and_bank
start_program
until_window "Valtrino"

by_keys "Cadastro de Cheques Recebidos" alt+m e
until_heard 'focus combo box "Nome do Cliente": Digite o nome do cliente'
typed "$name"
until_heard "text combo box \"Nome do Cliente\": $name"
keys Tab
until_heard 'text label "Mensagem": Digite o código do banco'
typed "$bank_name"
until_heard "text combo box \"Banco\": $bank_name"
keys Escape
until_window "Mensagem"
keys alt+s
until_window "Valtrino"

by_keys "Baixa de cheques recebidos" alt+m b
typed "$bank_name"
keys Tab Tab Tab Tab
until_heard 'focus tree item "Lançamento [0-9]*": Nº Cheque .*, Nome do Cliente .*, Valor R\$ .*'
keys space
until_heard 'ticked tree item "Lançamento [0-9]*": '
keys Escape
until_window "Valtrino"

by_keys "Relatório de Cheques Recebidos" alt+r c
keys alt+n
typed 01012000
keys Return
typed 31122099
keys alt+i
until_window "Valtrino - [Relatório de Cheques]"
keys ctrl+Next
until_heard 'description document "Páginas do relatório": Página 2'
keys ctrl+a ctrl+c
until_heard 'news notification "Aviso do relatório": O texto marcado foi copiado.'

leave
echo "passed"
