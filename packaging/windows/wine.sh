# shellcheck shell=bash
# Sourced by what lies beside it: Windows programs are run by `in_wine`, in a Windows of their own
# that goes when the script ends.

for wine_program in /usr/lib/wine/wine64 /usr/bin/wine64; do
    [ ! -x "$wine_program" ] || break
done

# start_wine: makes the Windows, in $wine_folder. No browser and no screen is asked for.
start_wine() {
    wine_folder=$(mktemp -d)
    export WINEPREFIX=$wine_folder/prefix WINEDEBUG=${WINEDEBUG:--all} WINEDLLOVERRIDES='mscoree,mshtml='
    trap '"$(dirname "$wine_program")/wineserver" -k 2>/dev/null || true; rm -rf "$wine_folder"' EXIT
    keep_wine
    in_wine wineboot -i >/dev/null 2>&1
}

# keep_wine: the server of the Windows outlasts ten minutes without a program. Else it goes with the last
# program, and turns away who comes just then ("Connection reset by peer").
keep_wine() {
    mkdir -p "$WINEPREFIX"
    "$(dirname "$wine_program")/wineserver" -p600
}

in_wine() {
    "$wine_program" "$@"
}

# The same with a console, which keys come by; what is printed goes where ours does.
at_terminal() {
    local line said=$wine_folder/said status=0
    printf -v line ' %q' "$wine_program" "$@"
    : >"$said"
    script -qec "$line >$(printf %q "$said") 2>&1" /dev/null </dev/null >/dev/null || status=$?
    cat "$said"
    return $status
}
