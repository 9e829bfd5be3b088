# shellcheck shell=bash
# Sourced by ./run: where the shop's data is. Never in a build folder, which is deleted when a build
# goes wrong, nor in the clone, which is tidied: in the user's own folder for data, or where
# VALTRINO_DADOS says.
#
# The program looks for the data beside itself, or where the init.ini beside itself says. That file
# is a link to the one kept with the data, so that a folder chosen in the program is remembered too.

# The folder, made if it isn't there.
data_folder() {
    local folder=${VALTRINO_DADOS:-${XDG_DATA_HOME:-$HOME/.local/share}/valtrino}
    mkdir -p "$folder"
    (cd "$folder" && pwd -P)
}

# chosen_folder <init.ini>: what its first line says.
chosen_folder() { head -n 1 "$1" | tr -d '\r\n'; }

# is_within <folder> <path>
is_within() {
    case $(realpath -m "$2")/ in
    "$(realpath -m "$1")"/*) return 0 ;;
    *) return 1 ;;
    esac
}

# keep_data <folder of the built programs> <data folder>: afterwards the program beside which the
# tools are finds its data in the data folder, or in the folder chosen by somebody, and what earlier
# versions kept in the build folder is there. Ends telling why if that can't be moved: nothing is
# ever overwritten, nor moved while somebody has it open.
keep_data() {
    local bin=$1 data=$2 setting=$2/init.ini old=$1
    if [ -f "$bin/init.ini" ] && [ ! -L "$bin/init.ini" ]; then
        mv --backup=numbered "$bin/init.ini" "$setting"
    fi
    if [ -e "$setting" ] && is_within build "$(chosen_folder "$setting")"; then
        old=$(chosen_folder "$setting")
        mv --backup=numbered "$setting" "$setting.antes"
    fi
    [ -e "$setting" ] || printf '%s\n' "$data" >"$setting"
    if [ "$(chosen_folder "$setting")" = "$data" ] && [ -e "$old/automacao.mdb" ]; then
        move_data "$bin" "$old" "$data"
    fi
    ln -sfn "$setting" "$bin/init.ini"
}

move_data() {
    local bin=$1 old=$2 data=$3
    if [ -e "$data/automacao.mdb" ]; then
        cat >&2 <<END
There is a database in $old, and another in
$data, which is the one that is used. Nobody touches the first one,
but it is in a folder that is deleted when a build goes wrong: put it where you want it.
END
        return
    fi
    "$bin/valtrino-mdb" move "$old/automacao.mdb" "$data" || return 1
    printf 'The database and its copies, until now in\n%s,\nhave been moved to %s.\n' "$old" "$data"
}

# configure: for the build, anew if the clone has been moved since.
configure() {
    local cache=build/release/CMakeCache.txt fresh=()
    if [ -e "$cache" ] && ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$(pwd -P)" "$cache"; then
        fresh=(--fresh)
    fi
    cmake --preset release "${fresh[@]}"
}
