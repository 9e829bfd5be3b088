# shellcheck shell=bash disable=SC2034  # the journeys read what is set here
# What every journey needs: a screen of its own with a window manager, the program in a folder of its
# own with a fresh database, and ways to wait, type and look. Sourced by the journeys, which are
# called with the folder of the built programs and, if pictures are wanted, the folder for them:
#
#     tests/journeys/bancos.sh build/dev/bin [docs]     (its last pictures are in docs/)
#
# A folder with the program for Windows is taken as well: it runs under wine then, in a Windows of the
# journey's own (packaging/windows/test-journeys).
#
# Ends with 77 (skipped) where the machine has no X server to spare.

set -euo pipefail

source "$(dirname "${BASH_SOURCE[0]}")/../scripts/midday.sh"

programs=$(realpath "$1")
pictures=${2:-}
# What keeps the shop's data, for journeys that compare the rows: one after the other.
kept_by=${VALTRINO_KEPT_BY:-jet4 jet3}

for tool in Xvfb setxkbmap openbox xdotool import mdb-export; do
    if ! command -v "$tool" > /dev/null; then
        echo "skipped: $tool is not installed"
        exit 77
    fi
done

place=$(mktemp -d)
folder=$place/data # of the file that is looked at
per_key=30 per_letter=15 # milliseconds
windows=           # or the folder of the program for Windows
if [ -e "$programs/valtrino.exe" ]; then
    windows=$programs
    programs=$place/windows
    per_key=80 per_letter=50 # typed faster some go astray
    source "$(dirname "${BASH_SOURCE[0]}")/../../packaging/windows/wine.sh"
fi
server=            # or the address of the database, where the data are on a server
helpers=()
finish() {
    for helper in "${helpers[@]}"; do
        kill "$helper" 2> /dev/null || true
    done
    [ -z "$windows" ] || "$(dirname "$wine_program")/wineserver" -k 2> /dev/null || true
    wait 2> /dev/null || true
    rm -rf "$place"
}
trap finish EXIT

fail() {
    echo "FAILED: $*" >&2
    import -window root "${TMPDIR:-/tmp}/valtrino-journey-failed.png" 2> /dev/null || true
    exit 1
}

# A 1366x768 screen like the shop's, all the program's settings in the journey's own folder. The screen
# must not start anew when its first client leaves: the next one, just coming, would be thrown out.
start_screen() {
    mkfifo "$place/display"
    Xvfb -displayfd 3 -screen 0 1366x768x24 -noreset -nolisten tcp 3> "$place/display" 2> /dev/null &
    screen=$!
    helpers+=("$screen")
    read -r -t 60 number < "$place/display" || fail "no X server"
    export DISPLAY=":$number" QT_QPA_PLATFORM=xcb HOME="$place/home" XDG_CONFIG_HOME="$place/home"
    export XDG_RUNTIME_DIR="$place/home" LC_ALL=C.UTF-8
    mkdir -m 700 "$place/home"
    home=$HOME # as the program has it
    set_keyboard
    openbox 2> /dev/null &
    helpers+=($!)
    until_true "the window manager" xdotool get_num_desktops
    [ -z "$windows" ] || start_windows
}

# The shop's; of that wine takes some keys for others, and gets letters with accents on keys of their own.
set_keyboard() {
    [ -n "$windows" ] || { setxkbmap br && return; }
    local letter key=13 letters=
    for letter in {a,e,i,o,u}acute {a,e,o}circumflex {a,o}tilde ccedilla; do
        letters+=" key <FK$((key++))> { [ $letter ] };"
    done
    setxkbmap -layout us -print |
        sed "s/.*xkb_symbols.*/xkb_symbols { include \"pc+us\" $letters };/" | xkbcomp -w 0 - "$DISPLAY"
}

# The Windows, and beside each program what starts it as if it were one of this system.
start_windows() {
    local name
    export WINEPREFIX=$place/wine WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml='
    cp -r "$windows" "$programs"
    for name in "$windows"/*.exe; do
        name=$(basename "$name" .exe)
        printf '#!/bin/bash\nexec "%s" "$(dirname "$0")/%s.exe" "${@/#\//Z:/}"\n' "$wine_program" "$name" \
            > "$programs/$name"
        chmod +x "$programs/$name"
    done
    keep_wine
    in_wine wineboot -i > /dev/null 2>&1
    {
        printf 'REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\Wine\\Fonts\\Replacements]\n'
        printf '"%s"="DejaVu Sans"\n' "MS Shell Dlg" "MS Shell Dlg 2" "Segoe UI" Tahoma Arial
    } > "$place/fonts.reg" # that there are, as those of Windows aren't
    in_wine regedit /S "Z:$place/fonts.reg"
    home=$(echo "$WINEPREFIX/drive_c/users"/[!P]*)
}

# seen <path>: as the program has it.
seen() {
    local path=$1
    if [ -n "$windows" ]; then
        [[ $path = "$WINEPREFIX/drive_c"/* ]] && path=C:${path#"$WINEPREFIX/drive_c"} || path=Z:$path
        path=${path//\//\\}
    fi
    printf '%s' "$path"
}

# The program in a folder of its own, its init.ini naming the folder of the database.
install_program() {
    mkdir -p "$place/program" "$folder"
    if [ -n "$windows" ]; then
        cp -r "$programs/." "$place/program/"
    else
        cp "$programs/valtrino" "$place/program/"
    fi
    printf '%s\r\n' "$(seen "$folder")" > "$place/program/init.ini"
}

# new_shop <what keeps it> [<how it is filled>...]: a fresh database with samples, or with nothing in it,
# in a file of that version or on a server, and init.ini names it.
new_shop() {
    local by=$1 folder=$folder
    shift
    server=
    if [ "$by" = server ]; then
        new_database
        by=jet4 folder=$place/samples
        mkdir -p "$folder"
    fi
    rm -rf "${folder:?}/"*
    if [ $# = 0 ]; then
        [ -n "$server" ] || "$programs/valtrino-mdb" create "--$by" "$folder/automacao.mdb"
    else
        "$programs/valtrino-mdb" sample "--$by" "$@" "$folder/automacao.mdb"
        [ -z "$server" ] || to_the_server "$folder/automacao.mdb"
    fi
    printf '%s\r\n' "${server:-$(seen "$folder")}" > "$place/program/init.ini"
}

# A server of the journey's own, which only this machine reaches; servers don't run as root.
postgres_programs=$(ls -d /usr/lib/postgresql/*/bin 2> /dev/null | tail -n 1)
as_clerk=()
[ "$(id -u)" != 0 ] || as_clerk=(setpriv --reuid=postgres --regid=postgres --clear-groups)
needs_server() {
    if [ -z "$postgres_programs" ] || ! command -v psql > /dev/null; then
        echo "skipped: postgresql is not installed"
        exit 77
    fi
}
start_server() {
    [ ! -d "$place/server" ] || return 0
    mkdir -m 777 "$place/server"
    chmod 711 "$place"
    "${as_clerk[@]}" "$postgres_programs/initdb" -D "$place/server/data" -U dono -A trust -E UTF8 \
        --locale=C.UTF-8 --no-sync > /dev/null
    start_postgres "$place/server"
}
# start_postgres <folder>: the server with its data there, reached by a socket there.
start_postgres() {
    "${as_clerk[@]}" "$postgres_programs/postgres" -D "$1/data" -k "$1" -c listen_addresses= -c fsync=off \
        >> "$1/log" 2>&1 &
    postgres=$!
    helpers+=("$postgres")
    until_true "the server" psql -h "$1" -U dono -c '' postgres
    : > "$1/log" # without who came too early
}
databases=0
new_database() {
    start_server
    databases=$((databases + 1))
    psql -q -h "$place/server" -U dono -c "create database loja$databases" postgres
    server="postgresql:///loja$databases?user=dono&host=$place/server"
    "$programs/valtrino-mdb" create "$server" > /dev/null
}
# By way of programs that aren't ours.
to_the_server() {
    local table
    for table in bancos cliente_fornecedor cheques semfundos; do
        mdb-export -D '%Y-%m-%d %H:%M:%S' -T '%Y-%m-%d %H:%M:%S' "$1" "$table" > "$place/rows.csv"
        psql -q "$server" <<SQL
\copy valtrino.$table from '$place/rows.csv' (format csv, header match)
select setval(pg_get_serial_sequence('valtrino.$table', column_name), max, max > 1) from (
    select column_name from information_schema.columns
    where table_schema = 'valtrino' and table_name = '$table' and is_identity = 'YES') c,
    (select coalesce(max($(head -n 1 "$place/rows.csv" | cut -d , -f 1)), 1) from valtrino.$table) m (max) \g /dev/null
SQL
    done
}
# expect_sound: what was done has left the file, or the server's database, as it should be.
expect_sound() {
    if [ -n "$server" ]; then
        ! grep -E '(ERROR|PANIC):' "$place/server/log" || fail "the server had to complain"
    else
        [ -z "$(find "$folder" -name '*.ldb' -o -name '*-journal*')" ] || fail "something was left behind"
        "$programs/valtrino-mdb" check "$folder/automacao.mdb" > "$place/check" || fail "$(cat "$place/check")"
    fi
}

start_program() {
    "$place/program/valtrino" > "$place/output" 2>&1 &
    program=$!
}

# is_ready <process>: the main window of that program is in front, not the splash.
is_ready() {
    local window
    window=$(xdotool getactivewindow)
    [ "$(xdotool getwindowpid "$window")" = "$1" ] || return 1
    eval "$(xdotool getwindowgeometry --shell "$window")"
    [ "$WIDTH" -gt 1000 ]
}

# Waits for the program's end; its exit status must be this one.
expect_end() {
    local status=0
    until_true "the program's end" not kill -0 "$program"
    wait "$program" || status=$?
    [ "$status" = "$1" ] || fail "ended with status $status instead of $1: $(cat "$place/output")"
    [ ! -s "$place/output" ] || fail "the program printed: $(cat "$place/output")"
}

not() { ! "$@"; }

# leave [process]: ends the program, or that one, by the main window's keys. A program that is being
# made known to a screen reader, or isn't yet given the keys, may miss them: they are pressed again.
leave() {
    local program=${1:-$program}
    until_true "the main window" main_window_is_active
    sleep 0.3
    keys alt+a s
    for tenths in $(seq 500); do
        kill -0 "$program" 2> /dev/null || break
        sleep 0.1
        [ $((tenths % 100)) != 0 ] || ! main_window_is_active || keys Escape alt+a s
    done
    expect_end 0
}
main_window_is_active() {
    [ "$(xdotool getactivewindow getwindowpid)" = "$program" ] && main_is_in_front
}

# until_true <what> <command...>: up to a minute, for machines that do much else.
until_true() {
    local what=$1
    shift
    local look
    for look in $(seq 600); do
        "$@" > /dev/null 2>&1 && return
        sleep 0.1
        [ -z "$windows" ] || ((look % 20)) || wake_the_main_window
    done
    fail "waited in vain for $what"
}

title_is() { [ "$(xdotool getactivewindow getwindowname)" = "$1" ]; }
# The active window gets this title. The window manager says so a moment before keys go there.
until_window() {
    local looks=0
    until_true "the window $1" is_in_front "$1"
    sleep "${windows:+1}.3"
}
is_in_front() { title_is "$1" || { [ -n "$windows" ] && help_wine "$1"; }; }
# Wine doesn't bring to the front what its programs bring there among their own windows, and gives a
# window its first keys some time after it has become active.
help_wine() {
    ((++looks % 15 == 0)) || return 1
    if [ "$1" != Valtrino ] &&
        xdotool search --onlyvisible --name "^${1//[][]/.}\$" windowactivate; then
        title_is "$1"
    elif ((looks % 45 == 0)) && [[ ${last_keys[*]} =~ ^(alt\+.\ .|F[0-9]+)$ ]] && main_is_in_front; then
        ! title_is Valtrino || xdotool key --delay "$per_key" Escape Escape
        xdotool key --delay "$per_key" "${last_keys[@]}"
        return 1
    else
        return 1
    fi
}
# Of a program whose last other window has gone sometimes none is active.
wake_the_main_window() {
    xdotool getactivewindow getwindowname > /dev/null 2>&1 ||
        xdotool search --onlyvisible --name '^Valtrino' windowactivate > /dev/null 2>&1 || true
}
main_is_in_front() { [[ $(xdotool getactivewindow getwindowname) == Valtrino* ]]; }
# One of the system's own windows, by our title or by wine's.
until_dialog() {
    until_true "the dialog $1" either_title_is "$@"
    sleep "${windows:+1}.3"
}
either_title_is() { title_is "$1" || title_is "$2"; }

active_is() { [ "$(xdotool getactivewindow)" = "$1" ]; }

last_keys=()
keys() {
    last_keys=("$@")
    xdotool key --delay "$per_key" "$@"
}

# Types a text as on the shop's keyboard, accents by their dead keys.
typed() {
    local rest=$1 plain
    while [ -n "$rest" ]; do
        plain=${rest%%[! -~]*}
        [ -z "$plain" ] || xdotool type --delay "$per_letter" -- "$plain"
        rest=${rest#"$plain"}
        case ${rest:0:1} in
        '') ;;
        á) accented acute a ;;
        é) accented acute e ;;
        í) accented acute i ;;
        ó) accented acute o ;;
        ú) accented acute u ;;
        â) accented circumflex a ;;
        ê) accented circumflex e ;;
        ô) accented circumflex o ;;
        ã) accented tilde a ;;
        õ) accented tilde o ;;
        ç) keys ccedilla ;;
        *) fail "no keys for ${rest:0:1}" ;;
        esac
        rest=${rest:1}
    done
}

# accented <accent> <letter>
accented() {
    if [ -n "$windows" ]; then keys "$2$1"; else keys "dead_$1" "$2"; fi
}

# fill <field>...: types the fields from the focus on, each left by Enter.
fill() {
    for field in "$@"; do
        [ -z "$field" ] || typed "$field"
        keys Return
    done
}

# save_as <keys> <title of the dialog> <file>: what is on show, as a file. A copy stays in the folder
# VALTRINO_SAVED, if that is set.
saved=0
save_as() {
    keys "$1"
    until_dialog "$2" "Save As"
    keys ctrl+a
    typed "$(seen "$3")"
    keys Return
    until_true "the file $3" [ -s "$3" ]
    [ -z "${VALTRINO_SAVED:-}" ] || { sleep 0.5 && cp "$3" "$VALTRINO_SAVED/$((++saved))-${3##*/}"; }
}

# The rows of a table as an independent reader sees them, of the file or on the server; a line each,
# whatever their texts.
rows() {
    if [ -n "$server" ]; then
        on_the_server "$1" -At0 -F '|'
    else
        mdb-export -H -d '|' -Q -R $'\036' -T '%Y-%m-%d' "$folder/automacao.mdb" "$1"
    fi | tr -d '\r' | tr '\n\036\0' ' \n\n'
}
# The same as CSV, below the names of the columns.
exported() {
    if [ -n "$server" ]; then
        on_the_server "$1" --csv
    else
        mdb-export -D '%Y-%m-%d' -T '%Y-%m-%d' "$folder/automacao.mdb" "$1"
    fi
}
# on_the_server <table> <how psql prints it>...
on_the_server() {
    # shellcheck disable=SC2016
    psql -v table="$1" "${@:2}" "$server" <<'SQL'
select 'select ' || string_agg(case data_type
        when 'boolean' then format('%1$I::int as %1$I', column_name)
        when 'timestamp without time zone' then format('to_char(%1$I, ''YYYY-MM-DD'') as %1$I', column_name)
        else quote_ident(column_name) end, ',' order by ordinal_position)
    || format(' from valtrino.%I order by 1', :'table')
    from information_schema.columns where table_schema = 'valtrino' and table_name = :'table' \gexec
SQL
}
rows_are() { [ "$(rows "$1" | sort)" = "$2" ]; }
expect_rows() { until_true "the rows of $1: $2, instead of $(rows "$1")" rows_are "$1" "$2"; }

# The client of the highest credit limit and some bank, among those whose names every keyboard can type.
choose_client_and_bank() {
    IFS='|' read -r client name limit < <(rows cliente_fornecedor |
        LC_ALL=C awk -F'|' 'NF > 20 && $3 == 1 && $2 ~ /^[ -~]+$/ { print $1 "|" $2 "|" $16 }' |
        sort -t '|' -k 3,3nr | sed q)
    IFS='|' read -r bank _ bank_name < <(rows bancos | LC_ALL=C grep -E '^[ -~]+$' | sed q)
    limit=${limit%.*}
    [ "$limit" -gt 1000 ] || fail "no client with a credit limit"
}

# In the window of the cheque list: the chosen client's cheques are listed and the list entered.
to_the_list() {
    keys Return
    typed "$name"
    keys Tab Tab Tab
}

# picture <name> [window]: of the whole screen, or of a window (its number, or "active").
picture() {
    [ -n "$pictures" ] || return 0
    sleep 0.4
    local window=${2:-root}
    [ "$window" != active ] || window=$(xdotool getactivewindow)
    import -window "$window" -strip "$pictures/$1.png"
}

# ---- what a screen reader hears

listener=$programs/../tests/valtrino_heard

# Skips a journey where the machine has no bus for screen readers.
needs_hearing() {
    for tool in dbus-daemon "$listener" /usr/share/dbus-1/services/org.a11y.Bus.service; do
        if ! command -v "$tool" > /dev/null && ! [ -e "$tool" ]; then
            echo "skipped: $tool is not installed"
            exit 77
        fi
    done
}

# A bus of the journey's own; what programs tell there goes to a file, a line each.
start_hearing() {
    mkfifo "$place/bus"
    dbus-daemon --session --nofork --print-address=3 3> "$place/bus" > /dev/null 2>&1 &
    helpers+=($!)
    read -r -t 60 DBUS_SESSION_BUS_ADDRESS < "$place/bus" || fail "no bus"
    export DBUS_SESSION_BUS_ADDRESS QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
    "$listener" > "$place/heard" 2> "$place/heard.errors" &
    helpers+=($!)
    until_true "the listener" grep -q listening "$place/heard"
    heard=0
}

# until_heard <line>: said since the last of these lines, as the expression has it.
until_heard() {
    until_true "hearing: $1" heard_since "$1"
    heard=$(wc -l < "$place/heard")
}
heard_since() { tail -n "+$((heard + 1))" "$place/heard" | grep -q "^$1\$"; }

# ---- sums of the cheques, worked out anew

# cheques_due <first> <last>: their due days and values, both days included; dates compare as text.
cheques_due() {
    rows cheques | LC_ALL=C awk -F'|' -v first="$1" -v last="$2" \
        '$7 >= first && $7 <= last { print substr($7, 1, 10), $8 }'
}

# As the program writes amounts, from lines of a day and a value with four decimals: "2 1.234,56".
in_words() {
    LC_ALL=C awk '
        function reais(cents,    text, whole) {
            whole = sprintf("%d", int(cents / 100))
            while (length(whole) > 3) {
                text = "." substr(whole, length(whole) - 2) text
                whole = substr(whole, 1, length(whole) - 3)
            }
            return whole text sprintf(",%02d", cents % 100)
        }
        { split($2, value, "."); cents += value[1] * 100 + substr(value[2], 1, 2) }
        END { print NR, reais(cents) }'
}
