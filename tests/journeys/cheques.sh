#!/bin/bash
# A clerk's afternoon with received cheques, keyboard only, on a Jet 4 and on a Jet 3 database: a run of
# three cheques of one client, a fourth that passes his credit limit by one cent, one found in the list
# and changed, two settled; an independent reader then finds in the file just what is left.
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
    expect_rows cheques "$(printf '%s\n' "$first" "$second" "$third" "$fourth")"
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
    expect_rows cheques "$(printf '%s\n' "$third" "$fourth")"
    keys Escape
    until_window "Valtrino"
}

start_screen
install_program
for version in jet4 jet3; do
    rm -rf "$place/data/"*
    "$programs/valtrino-mdb" sample "--$version" --clients 100 --banks 4 --cheques 0 --bounced 0 \
        "$place/data/automacao.mdb"
    choose_client_and_bank
    start_program
    until_window "Valtrino"
    enter_a_run_of_three
    pass_the_limit_by_one_cent
    find_and_change
    settle_two
    keys alt+a s
    expect_end 0
    expect_rows cheques "$(printf '%s\n' "$third" "$fourth")"
    [ -z "$(find "$place/data" -name '*.ldb')" ] || fail "a lock file was left behind"
    "$programs/valtrino-mdb" check "$place/data/automacao.mdb" || fail "the $version file has faults"
done
echo "passed"
