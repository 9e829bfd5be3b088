#!/bin/bash
# A clerk's afternoon with received cheques, keyboard only, on a Jet 4 and on a Jet 3 database: a run of
# three cheques of one client, a fourth that passes his credit limit by one cent, a fifth whose line a
# reader types, one found in the list and changed, two settled; an independent reader then finds in the
# file just what is left.
source "$(dirname "$0")/journey.sh"

# cheque <lancamento> <agencia> <numero> <issue> <due> <value> <authoriser>: a row as it must be stored.
cheque() { printf '%s|%s|%s|%s|%s|%s|%s|%s||%s|1\n' "$1" "$client" "$bank" "$2" "$3" "$4" "$5" "$6" "$7"; }

enter_a_run_of_three() {
    keys alt+m e
    until_window "Cadastro de Cheques Recebidos"
    fill "$name" "$bank_name" 1234 101 05122026 10012027 10,00 Gerente
    keys alt+h               # Vários Cheques
    keys alt+s
    for number in 102 103; do
        typed "$number"
        keys alt+s
    done
    first=$(cheque 1 1234 101 2026-12-05 2027-01-10 10.0000 Gerente)
    second=$(cheque 2 1234 102 2026-12-05 2027-02-09 10.0000 Gerente)
    third=$(cheque 3 1234 103 2026-12-05 2027-03-11 10.0000 Gerente)
    expect_rows cheques "$(printf '%s\n' "$first" "$second" "$third")"
}

pass_the_limit_by_one_cent() {
    keys alt+v
    fill "$name" "$bank_name" 1234 104 05122026 10042027 "$((limit - 30)),00"
    sleep 0.5
    title_is "Cadastro de Cheques Recebidos" || fail "a total at the limit was warned of"
    keys shift+Tab
    fill "$((limit - 30)),01"
    until_window "Limite de crédito"
    keys Return
    until_window "Cadastro de Cheques Recebidos"
    typed Dono
    keys alt+s               # a warning, not a refusal
    fourth=$(cheque 4 1234 104 2026-12-05 2027-04-10 "$((limit - 30)).0100" Dono)
    expect_rows cheques "$(printf '%s\n' "$first" "$second" "$third" "$fourth")"
}

# digit <digits>: the one that checks them, by modulo 10.
digit() {
    local sum=0 weight=2 i product
    for ((i = ${#1} - 1; i >= 0; i--, weight = 3 - weight)); do
        product=$((${1:i:1} * weight))
        sum=$((sum + product / 10 + product % 10))
    done
    echo $(((10 - sum % 10) % 10))
}

# reader <bank> <branch> <number>: types the line of a cheque as its reader does.
reader() {
    local first middle=018${3}5 account=0000012345
    first=$(printf '%03d%s' "$1" "$2")
    xdotool type --delay "${windows:+4}5" "<$first$(digit "$middle")<$middle>$(digit "$first")$account$(digit "$account"):"
    keys Return
    sleep 0.5
}

read_one() {
    local official
    official=$(rows bancos | awk -F'|' -v bank="$bank" '$1 == bank { print $2 }')
    typed "$name"
    keys F6
    until_window "Ficha do cliente"
    picture FrmFicha active
    keys Escape
    until_window "Cadastro de Cheques Recebidos"
    reader "$official" 1234 000104  # from the client's field on to the date of issue
    picture FrmLancarCheques-leitor root
    keys F6
    until_window "Ficha do cliente"
    keys Escape
    until_window "Cadastro de Cheques Recebidos"
    fill 05122026 10052027   # the date is still marked
    typed "20,00"
    keys alt+s
    fifth="5|$client|$bank|1234|000104|2026-12-05|2027-05-10|20.0000|||1"
    until_window "Limite de crédito"
    keys Return              # the save goes on
    until_window "Cadastro de Cheques Recebidos"
    expect_rows cheques "$(printf '%s\n' "$first" "$second" "$third" "$fourth" "$fifth")"
}

find_and_change() {
    keys alt+l
    until_window "Localizar Cheque Recebidos"
    to_the_list
    picture FrmLocCHTerceiros active
    keys Down Return Return  # by due date the second; chosen twice it is picked
    until_window "Cadastro de Cheques Recebidos"
    keys Return Return
    picture FrmLancarCheques active
    typed 0099
    keys alt+s
    second=$(cheque 2 0099 102 2026-12-05 2027-02-09 10.0000 Gerente)
    expect_rows cheques "$(printf '%s\n' "$first" "$second" "$third" "$fourth" "$fifth")"
    keys Escape
    until_window "Valtrino"
}

settle_two() {
    keys alt+m b
    until_window "Baixa de cheques recebidos"
    to_the_list
    keys space Down space
    picture FrmLocCHTerceiros-baixa active
    keys alt+s
    expect_rows cheques "$(printf '%s\n' "$third" "$fourth" "$fifth")"
    keys Escape
    until_window "Valtrino"
}

start_screen
install_program
for by in $kept_by; do
    new_shop "$by" --clients 100 --banks 4 --cheques 0 --bounced 0
    choose_client_and_bank
    start_program
    until_window "Valtrino"
    enter_a_run_of_three
    pass_the_limit_by_one_cent
    read_one
    find_and_change
    settle_two
    leave
    expect_rows cheques "$(printf '%s\n' "$third" "$fourth" "$fifth")"
    expect_sound
done
echo "passed"
