#!/bin/bash
# A clerk's first day with the bank register, keyboard only, on a Jet 4 and on a Jet 3 database: banks
# are registered, one is refused as a duplicate, one is changed; what an independent reader then finds
# in the file is what was typed.
source "$(dirname "$0")/journey.sh"

register_banks() {
    until_window "Valtrino"
    keys alt+a b
    until_window "Cadastro de Bancos"
    while IFS='|' read -r code name; do
        typed "$code"
        keys Return
        typed "$name"
        keys alt+s
    done < <(printf '%s\n' '1|Banco do Norte S.A.' '104|Caixa da Serra' '237|Banco Paulista' \
        '341|Banco Itapema' '756|Cooperativa de Crédito do Vale')
    expect_rows bancos "$(printf '%s\n' '1|1|Banco do Norte S.A.' '2|104|Caixa da Serra' \
        '3|237|Banco Paulista' '4|341|Banco Itapema' '5|756|Cooperativa de Crédito do Vale')"
}

refuse_a_duplicate() {
    typed 237
    keys Return          # brings the bank up
    keys alt+s
    until_window "Advertência"
    keys Return
    until_window "Cadastro de Bancos"
}

change_a_bank() {
    typed 341            # the focus is back in the code
    keys Return
    typed "Banco Itapema do Sul"
    picture frmBancos active
    keys alt+s
    expect_rows bancos "$(printf '%s\n' '1|1|Banco do Norte S.A.' '2|104|Caixa da Serra' \
        '3|237|Banco Paulista' '4|341|Banco Itapema do Sul' '5|756|Cooperativa de Crédito do Vale')"
}

# Deliberate: an apostrophe breaks the search for a duplicate. It must end the program in good order.
fail_with_an_apostrophe() {
    keys alt+a b
    until_window "Cadastro de Bancos"
    keys alt+v
    typed 999
    keys Return
    typed "Banco D'Oeste"
    keys alt+s
    until_window "Valtrino"
    keys Return
    expect_end 1
    [ "$(rows bancos | wc -l)" = 5 ] || fail "the bank that failed was stored"
}

start_screen
install_program
for by in $kept_by; do
    new_shop "$by"
    start_program
    register_banks
    refuse_a_duplicate
    change_a_bank
    keys Escape
    leave
    expect_sound
done
start_program
until_window "Valtrino"
fail_with_an_apostrophe
echo "passed"
