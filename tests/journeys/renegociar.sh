#!/bin/bash
# A cheque renegotiated and the data moved to another folder, on a Jet 4 and on a Jet 3 database. A cheque
# of 1.000,00 due on 01/03 goes to 31/03 at 2: the window shows 600,00 and 1.600,00, the file gets the date
# alone. Before that the folder chooser names another folder, which the program at work leaves alone and
# the next one uses.
source "$(dirname "$0")/journey.sh"

rows() { mdb-export -H -d '|' -Q -T '%Y-%m-%d' "$folder/automacao.mdb" "$1"; }

# expect_cheque <due>: the one row of the table, as it must be stored.
expect_cheque() {
    expect_rows cheques "1|$client|$bank|1234|501|2026-02-01|$1|1000.0000||Gerente|1"
}

enter_the_cheque() {
    keys alt+m e
    until_window "Cadastro de Cheques Recebidos"
    fill "$name" "$bank_name" 1234 501 01022026 01032026 1000,00 Gerente
    keys alt+s
    expect_cheque 2026-03-01
    keys Escape
    until_window "Valtrino"
}

# copy_new_value: with the mouse, as Tab passes it over; the box is the last of the body, at the right.
copy_new_value() {
    eval "$(xdotool getactivewindow getwindowgeometry --shell)"
    xdotool mousemove --window "$WINDOW" $((WIDTH * 3 / 4)) $((HEIGHT - 66)) click 1
    keys ctrl+c
}

# renegotiate <new due date>: at 2 a month.
renegotiate() {
    keys alt+m r
    until_window "Renegociação de cheques"
    keys Return              # the finding has the focus
    until_window "Localizar Cheque Recebidos"
    to_the_list
    keys Down Return Return  # chosen twice it is picked
    until_window "Renegociação de cheques"
    typed 2
    keys Return
    typed "$1"
    keys Return
    picture FrmRenegociar active
    copy_new_value
    keys alt+s
}

back_to_the_main_window() {
    keys Escape
    until_window "Valtrino"
}

open_the_folder_chooser() {
    keys alt+u d
    until_window "Localizar Base de Dados"
}

expect_init_ini() {
    until_true "init.ini to be $1" grep -qxF "$1" "$place/program/init.ini"
    [ "$(wc -l < "$place/program/init.ini")" = 1 ] || fail "init.ini has more than one line"
}

choose_the_other_folder() {
    open_the_folder_chooser
    keys Home Return         # of the drives the home folder, and on to its tree
    sleep 1                  # until it has been read
    typed Loja
    keys Return
    sleep 1                  # until its files have been
    picture frmcaminho active
    keys alt+s
    expect_init_ini "$other"
    back_to_the_main_window
}

# What was copied is pasted where it comes to a file.
expect_copied() {
    open_the_folder_chooser
    keys Tab Tab Tab ctrl+a ctrl+v alt+s
    expect_init_ini "$1"
    back_to_the_main_window
}

end_the_program() {
    keys alt+a s
    expect_end 0
}

start_screen
other=$HOME/Loja
mkdir -p "$HOME/Documentos" "$other"
for version in jet4 jet3; do
    install_program
    folder=$place/data
    rm -rf "$folder/"*
    "$programs/valtrino-mdb" sample "--$version" --clients 100 --banks 4 --cheques 0 --bounced 0 \
        "$folder/automacao.mdb"
    cp "$folder/automacao.mdb" "$other/"
    choose_client_and_bank
    start_program
    until_window "Valtrino"
    enter_the_cheque
    choose_the_other_folder
    renegotiate 31032026
    expect_cheque 2026-03-31
    back_to_the_main_window
    end_the_program

    cp "$folder/automacao.mdb" "$other/"
    start_program
    until_window "Valtrino"
    renegotiate 30042026
    folder=$other
    expect_cheque 2026-04-30
    back_to_the_main_window
    expect_copied 1600,00
    end_the_program
    folder=$place/data
    expect_cheque 2026-03-31

    for folder in "$place/data" "$other"; do
        [ -z "$(find "$folder" -name '*.ldb')" ] || fail "a lock file was left behind"
        "$programs/valtrino-mdb" check "$folder/automacao.mdb" || fail "the $version file has faults"
    done
done
echo "passed"
