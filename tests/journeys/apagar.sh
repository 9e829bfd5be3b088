#!/bin/bash
# Old cheques are purged, keyboard only, on a Jet 4 and on a Jet 3 database: of the three that fall due in
# a period the second one stays, as the purge has it, and goes with the next purge; an unknown bank stops
# it. An independent reader then finds just the other cheques in the file.
source "$(dirname "$0")/journey.sh"

# Some days between which just three cheques fall due (first, last), the three by entry number, and all
# other cheques.
choose_period() {
    local due
    due=$(rows cheques | awk -F'|' '$7 != "" { print $7 "|" $1 }' | sort)
    read -r first last < <(awk -F'|' '
        { day[NR] = $1 }
        END {
            for (i = 2; i + 3 <= NR; i++)
                if (day[i - 1] < day[i] && day[i + 2] < day[i + 3]) { print day[i], day[i + 2]; exit }
        }' <<< "$due")
    mapfile -t chosen < <(awk -F'|' -v first="$first" -v last="$last" \
        '$1 >= first && $1 <= last { print $2 }' <<< "$due" | sort -n)
    [ "${#chosen[@]}" = 3 ] || fail "no period of three cheques"
    others=$(without "${chosen[@]}")
}

# without <lancamento>...: the rows of all other cheques.
without() {
    local pattern
    pattern=$(IFS='|' && echo "$*")
    rows cheques | grep -vE "^($pattern)\|" | sort
}

# typed_day <yyyy-mm-dd>: as a clerk types it, day first.
typed_day() { typed "${1:8:2}${1:5:2}${1:0:4}"; }

fill_period() {
    typed_day "$first"
    keys Return
    typed_day "$last"
    keys Return
}

purge() {
    keys alt+e
    until_window "Mensagem"
    keys Return
    until_window "Apagar Cheques"
}

start_screen
install_program
for by in $kept_by; do
    new_shop "$by" --clients 20 --banks 4 --cheques 60 --bounced 5
    choose_period
    all=$(rows cheques | sort)
    bounced=$(rows semfundos | sort)
    start_program
    until_window "Valtrino"
    keys alt+u a
    until_window "Apagar Cheques"

    fill_period
    typed "Banco que falta"
    purge                    # "Banco não cadastrado !"
    expect_rows cheques "$all"

    keys ctrl+a Delete
    picture FrmApagar active
    purge
    survivor=$(rows cheques | grep "^${chosen[1]}|")
    expect_rows cheques "$(printf '%s\n' "$others" "$survivor" | sort)"

    keys alt+i
    fill_period
    purge
    expect_rows cheques "$others"

    keys Escape
    leave
    expect_rows cheques "$others"
    expect_rows semfundos "$bounced"
    expect_sound
done
echo "passed"
