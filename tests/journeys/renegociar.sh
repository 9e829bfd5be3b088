#!/bin/bash
# A cheque renegotiated and the data moved to another place, on a Jet 4 and on a Jet 3 database. A cheque
# of 1.000,00 due on 01/03 goes to 31/03 at 2: the window shows 600,00 and 1.600,00, the file gets the date
# alone. Before that the folder chooser names another folder (or a database), which the program at work
# leaves alone and the next one uses.
source "$(dirname "$0")/journey.sh"

# copy_the_shop: as it is now, to where the data are moved.
copy_the_shop() {
    if [ -z "$server" ]; then
        other=$home/Loja
        cp "$folder/automacao.mdb" "$other/"
    else
        other=${server/loja/outra}
        psql -q -h "$place/server" -U dono -d postgres <<SQL
set client_min_messages = warning;
drop database if exists outra$databases;
create database outra$databases;
SQL
        pg_dump "$server" | psql -q -v ON_ERROR_STOP=1 "$other" > /dev/null
    fi
}
# at_the_other <command>...: that looks at the rows, there.
at_the_other() {
    local folder=$folder server=$server
    if [ -z "$server" ]; then folder=$other; else server=$other; fi
    "$@"
}

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

init_ini_is() { [ "$(tr -d '\r' < "$place/program/init.ini")" = "$1" ]; }
expect_init_ini() {
    until_true "init.ini to be $1" init_ini_is "$1"
    [ "$(wc -l < "$place/program/init.ini")" = 1 ] || fail "init.ini has more than one line"
}

choose_the_other_place() {
    open_the_folder_chooser
    if [ -n "$server" ]; then
        keys Tab Tab Tab ctrl+a
        typed "$other"
    else
        keys Home Return     # of the drives the home folder, and on to its tree
        sleep 1              # until it has been read
        typed Loja
        keys Return
        sleep 1              # until its files have been
    fi
    picture frmcaminho active
    keys alt+s
    if [ -n "$server" ]; then expect_init_ini "$other"; else expect_init_ini "$(seen "$other")"; fi
    back_to_the_main_window
}

# What was copied is pasted where it comes to a file.
expect_copied() {
    open_the_folder_chooser
    keys Tab Tab Tab ctrl+a ctrl+v alt+s
    expect_init_ini "$1"
    back_to_the_main_window
}

start_screen
mkdir -p "$home/Documentos" "$home/Loja"
install_program
for by in $kept_by; do
    new_shop "$by" --clients 100 --banks 4 --cheques 0 --bounced 0
    choose_client_and_bank
    start_program
    until_window "Valtrino"
    copy_the_shop
    enter_the_cheque
    choose_the_other_place
    renegotiate 31032026
    expect_cheque 2026-03-31
    back_to_the_main_window
    leave

    copy_the_shop
    start_program
    until_window "Valtrino"
    renegotiate 30042026
    at_the_other expect_cheque 2026-04-30
    back_to_the_main_window
    expect_copied 1600,00
    leave
    expect_cheque 2026-03-31
    expect_sound
    at_the_other expect_sound
done
echo "passed"
