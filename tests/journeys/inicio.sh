#!/bin/bash
# The start of the day and its end: splash and main window, the about box, the end by the close box;
# then the same with the database gone, which must be said and end the program.
source "$(dirname "$0")/journey.sh"

on_show() { xdotool search --onlyvisible --name '^Valtrino$'; }

start_screen
install_program
"$programs/valtrino-mdb" create "$place/data/automacao.mdb"

start_program
until_true "the splash" on_show
picture frmSplash "$(on_show | tail -1)"
until_window "Valtrino"
main=$(xdotool getactivewindow)
keys alt+j s
until_true "the about box" not active_is "$main"
picture frmAbout active
keys Escape
until_true "the main window" active_is "$main"
sleep 0.3
keys alt+F4
expect_end 0

mv "$place/data/automacao.mdb" "$place/data/outra.mdb"
start_program
until_window "Valtrino"
keys Return
expect_end 1
echo "passed"
