#!/bin/bash
# The first day of a program just unpacked: a folder is chosen, an empty database made in it, the
# program opens it; chosen again, what is there is kept, whatever capitals its name has.
source "$(dirname "$0")/journey.sh"

choose() {
    "$place/program/valtrino-novo" > "$place/output" 2>&1 &
    program=$!
    until_window "Valtrino (novo banco de dados)"
    keys Return
    until_dialog "Pasta do banco de dados" "Select Folder"
    keys ctrl+a
    typed "$(seen "$place/data")"
    keys Return
    until_window "Valtrino (novo banco de dados)"
    picture novo active
    keys Return
    expect_end 0
    until_window "Valtrino"
}

# By either system's name of it.
runs() { pgrep -f "${place##*/}.program.valtrino"; }

add_bank() {
    keys alt+a b
    until_window "Cadastro de Bancos"
    fill 104 "Banco Norte"
    keys alt+s
    expect_rows bancos "1|104|Banco Norte"
    keys Escape
    until_window "Valtrino"
}

start_screen
install_program
[ -n "$windows" ] || cp "$programs/valtrino-novo" "$place/program/"
rm "$place/program/init.ini"
choose
[ "$(tr -d '\r' < "$place/program/init.ini")" = "$(seen "$place/data")" ] || fail "init.ini names another folder"
add_bank
keys alt+a s
until_true "the end" not runs
# As a back-office on another system may have named it: no empty one is put beside it.
mv "$place/data/automacao.mdb" "$place/data/AUTOMACAO.MDB"
choose
keys alt+a s
until_true "the end" not runs
[ ! -e "$place/data/automacao.mdb" ] || fail "an empty database beside the shop's"
mv "$place/data/AUTOMACAO.MDB" "$place/data/automacao.mdb"
expect_rows bancos "1|104|Banco Norte"
"$programs/valtrino-mdb" check "$place/data/automacao.mdb" || fail "the file has faults"
echo "passed"
