#!/bin/bash
# A received cheque comes back unpaid, on a Jet 4 and on a Jet 3 database: nothing is known of its client
# yet; it is copied by its number, the company is typed, it is saved, found in the list and changed; the
# consultation then lists it, and the second click opens it to be looked at, when nothing can be typed.
# An independent reader finds in the file just that cheque more. By keyboard but for the two clicks.
source "$(dirname "$0")/journey.sh"

# A received cheque whose number no other has, of a client without bounced cheques, whose name no other
# has and every keyboard can type.
choose_cheque() {
    received=$(rows cheques)
    bounced=$(rows semfundos)
    IFS='|' read -r name client bank agency number issue value remark < <(
        LC_ALL=C awk -F'|' '
            FNR == 1 { file++ }
            file == 1 && NF > 20 && $3 == 1 && $2 ~ /^[ -~]+$/ { name[$1] = $2; named[$2]++ }
            file == 2 { unpaid[$2] = 1 }
            file == 3 { cheque[$5] = $0; numbered[$5]++ }
            END {
                for (number in cheque) {
                    split(cheque[number], f, "|")
                    if (numbered[number] == 1 && named[name[f[2]]] == 1 && !(f[2] in unpaid))
                        print name[f[2]] "|" f[2] "|" f[3] "|" f[4] "|" f[5] "|" f[6] "|" f[8] "|" f[9]
                }
            }' <(rows cliente_fornecedor) <(printf '%s\n' "$bounced") <(printf '%s\n' "$received") |
            sort | sed q)
    [ -n "$number" ] || fail "no cheque to choose"
}

# expect_bounced <agency>: that cheque and those there were, and the received ones as they were.
expect_bounced() {
    local row="11|$client|$bank|$1|$number|$issue|$value|Mercado Bom|$remark"
    expect_rows semfundos "$(printf '%s\n' "$bounced" "$row" | sort)"
    expect_rows cheques "$(sort <<< "$received")"
}

know_nothing_of_the_client() {
    keys alt+m s
    until_window "Consultar CPF"
    typed "$name"
    keys Return
    until_window "Pesquisar Cheques"
    keys Return
    until_window "Consultar CPF"
    keys Escape
    until_window "Valtrino"
}

copy_and_save() {
    keys alt+m c
    until_window "Lançamento de cheques sem fundos"
    keys alt+u
    typed "$number"
    picture FrmLancasSFundos-busca active
    keys Return              # copied, back at the client
    keys Return Return Return Return Return Return
    typed "Mercado Bom"
    keys Return
    picture FrmLancasSFundos active
    keys Return Return       # from the remarks to the save, and that pressed
    expect_bounced "$agency"
}

find_and_change() {
    keys alt+l
    until_window "Localizar Cheque Recebidos"
    keys Return
    typed "$name"
    keys Tab Tab Return Return
    until_window "Lançamento de cheques sem fundos"
    keys Return Return
    typed 0099
    keys alt+s
    expect_bounced 0099
    keys Escape
    until_window "Valtrino"
}

# click_first: in the list of the window on show, by the mouse. The row stands well below the fields, and
# a click beside the rows would choose nothing.
click_first() { xdotool mousemove --window "$(xdotool getactivewindow)" 200 180 click 1; }

consult() {
    keys alt+m s
    until_window "Consultar CPF"
    typed "$name"
    keys Return
    sleep 0.5
    click_first
    picture FrmConsultaCH active
    title_is "Consultar CPF" || fail "the first click opened the cheque"
    click_first
    until_window "Lançamento de cheques sem fundos"
    typed 9
    picture FrmLancasSFundos-consulta active
    keys Return              # on the close button
    until_window "Consultar CPF"
    keys Escape
    until_window "Valtrino"
}

start_screen
install_program
for by in $kept_by; do
    new_shop "$by" --clients 100 --banks 4 --cheques 60 --bounced 10
    choose_cheque
    start_program
    until_window "Valtrino"
    know_nothing_of_the_client
    copy_and_save
    find_and_change
    consult
    leave
    expect_bounced 0099
    expect_sound
done
echo "passed"
