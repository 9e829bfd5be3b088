#!/bin/bash
# A whole day at the counter without a mouse, on a Jet 4 and on a Jet 3 database that begin empty: a bank
# and a client are registered; ten cheques of the client are entered, in no more keys than the shop is
# used to, each key counted; one is looked up and changed, two are settled, one comes back unpaid, the
# client is consulted, a cheque is renegotiated, the report is asked for and the oldest cheque purged.
# An independent reader then finds in the file just what is left.
source "$(dirname "$0")/journey.sh"

most_keys=109

# ---- Keys are counted as they go down, those that are held for another too: alt+s is two.

pressed=0
keys() {
    local key
    for key in "$@"; do
        pressed=$((pressed + 1 + $(tr -cd + <<< "$key" | wc -c)))
    done
    last_keys=("$@")
    xdotool key --delay "$per_key" "$@"
}
typed() { # plain letters and digits only
    pressed=$((pressed + ${#1}))
    xdotool type --delay "$per_letter" -- "$1"
}

back_to_the_main_window() {
    keys Escape
    until_window "Valtrino"
}

# cheque <lancamento> <agencia> <numero> <due>: a row as it must be stored.
cheque() { printf '%s|1|1|%s|%s|%s|%s|150.0000|||1\n' "$1" "$2" "$3" "$today" "$4"; }
due_in() { date -d "$today + $1 days" +%Y-%m-%d; }
expect_cheques() { expect_rows cheques "$(printf '%s\n' "${stored[@]}" | sort)"; }

# ---- The day

register_the_bank() {
    keys alt+a b
    until_window "Cadastro de Bancos"
    fill 104 "banco norte"
    keys Return              # on Salvar
    expect_rows bancos "1|104|banco norte"
    back_to_the_main_window
}

client_is_stored() { [ -n "$(rows cliente_fornecedor)" ]; }

register_the_client() {
    keys alt+a c
    until_window "Cadastro Cliente"
    keys alt+v
    fill "ana lima"
    keys alt+i               # to the credit limit
    fill 5000
    typed "ana"              # in the e-mail, from which Enter goes to Salvar
    xdotool keydown Return
    sleep 1                  # for so long a thumb rests on it
    xdotool keyup Return
    [ -z "$(rows cliente_fornecedor)" ] || fail "a key held down saved the client"
    keys Return
    until_true "the client" client_is_stored
    back_to_the_main_window
}

enter_ten_cheques() {
    keys alt+m e
    until_window "Cadastro de Cheques Recebidos"
    pressed=0
    fill an ba 1234 100001 "" "" 150
    keys alt+h               # Vários Cheques
    keys alt+s
    for last in $(seq -w 2 10); do
        typed "1000$last"
        keys alt+s
    done
    echo "$by: ten cheques in $pressed keys"
    [ "$pressed" -le "$most_keys" ] || fail "ten cheques took $pressed keys, not $most_keys"
    stored=()
    for number in $(seq 10); do
        stored+=("$(cheque "$number" 1234 $((100000 + number)) "$(due_in $((30 * number)))")")
    done
    expect_cheques
}

look_up_and_change() {
    keys alt+l
    until_window "Localizar Cheque Recebidos"
    list_the_client
    keys Down Return Return  # the second, chosen twice
    until_window "Cadastro de Cheques Recebidos"
    keys alt+g
    typed 0099
    keys Escape
    until_window "Mensagem"  # it isn't saved yet
    keys Return              # the harmless answer
    until_window "Cadastro de Cheques Recebidos"
    keys alt+s
    stored[1]=$(cheque 2 0099 100002 "$(due_in 60)")
    expect_cheques
    back_to_the_main_window
}

# In the window of the cheque list: the client's cheques are listed and the list entered.
list_the_client() {
    keys alt+n
    typed an
    keys Tab Tab Tab
}

settle_two() {
    keys alt+m b
    until_window "Baixa de cheques recebidos"
    list_the_client
    keys space Down space
    keys alt+s
    unset 'stored[0]' 'stored[1]'
    expect_cheques
    back_to_the_main_window
}

one_comes_back() {
    keys alt+m c
    until_window "Lançamento de cheques sem fundos"
    keys alt+u
    fill 100003
    keys alt+p               # to the company
    fill "mercado" ""        # and the remarks
    keys Return              # on Salvar
    expect_rows semfundos "1|1|1|1234|100003|$today|150.0000|mercado|"
    back_to_the_main_window
}

consult_the_client() {
    keys alt+m s
    until_window "Consultar CPF"
    fill an
    sleep 0.5
    title_is "Consultar CPF" || fail "nothing is known of a client whose cheque came back"
    back_to_the_main_window
}

renegotiate() {
    keys alt+m r
    until_window "Renegociação de cheques"
    keys Return              # the finding has the focus
    until_window "Localizar Cheque Recebidos"
    list_the_client
    keys Return Return
    until_window "Renegociação de cheques"
    fill 2 "$(date -d "$today + 100 days" +%d%m%Y)"
    keys Return              # on Salvar
    stored[2]=$(cheque 3 1234 100003 "$(due_in 100)")
    expect_cheques
    back_to_the_main_window
}

ask_for_the_report() {
    keys alt+r c
    until_window "Relatório de Cheques Recebidos"
    keys alt+i
    until_window "Valtrino - [Relatório de Cheques]"
    keys alt+r c             # the filter has stayed above the report
    until_window "Relatório de Cheques Recebidos"
    keys Escape
    until_window "Valtrino - [Relatório de Cheques]"
}

purge_the_last() {
    keys alt+u a
    until_window "Apagar Cheques"
    fill "$(date -d "$today + 300 days" +%d%m%Y)" "$(date -d "$today + 300 days" +%d%m%Y)"
    keys alt+e
    until_window "Mensagem"
    keys Return
    until_window "Apagar Cheques"
    unset 'stored[9]'
    expect_cheques
    keys Escape
    until_window "Valtrino - [Relatório de Cheques]"
}

start_screen
install_program
today=$(date +%Y-%m-%d)
for by in $kept_by; do
    new_shop "$by"
    start_program
    until_window "Valtrino"
    register_the_bank
    register_the_client
    enter_ten_cheques
    back_to_the_main_window  # nothing is asked: all is saved
    keys alt+m e
    until_window "Cadastro de Cheques Recebidos"
    look_up_and_change
    settle_two
    one_comes_back
    consult_the_client
    renegotiate
    ask_for_the_report
    purge_the_last
    leave
    expect_cheques
    expect_sound
done
echo "passed"
