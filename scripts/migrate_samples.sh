#!/bin/bash
# Moves every real sample file to a private server and back, and holds each table of what comes back
# against the file, its relationships, the tables' properties and rules and the queries too: the
# report of all of them, one line each. Needs Debian's postgresql; for the last two, mdbtools.
#
#     scripts/migrate_samples.sh [folder of the programs] [folder of the samples]
set -e
cd "$(dirname "$0")/.."
tool=$(realpath "${1:-build/dev/bin}")/valtrino-mdb
samples=${2:-${VALTRINO_SAMPLES:-../shared/mdb}}
programs=/usr/lib/postgresql/15/bin
[ -x "$programs/postgres" ] || { echo "no server to try with: Debian's package postgresql isn't installed"; exit 0; }

work=$(mktemp -d)
chmod 777 "$work"
as() { if [ "$(id -u)" = 0 ]; then setpriv --reuid=postgres --regid=postgres --clear-groups "$@"; else "$@"; fi; }
as "$programs/initdb" -D "$work/data" -U loja -A trust -E UTF8 --locale=C.UTF-8 --no-sync >"$work/said"
as "$programs/postgres" -D "$work/data" -k "$work" -c listen_addresses= -c fsync=off >"$work/log" 2>&1 &
server=$!
trap 'kill -INT "$(head -n 1 "$work/data/postmaster.pid")"; wait $server || true; rm -rf "$work"' EXIT
until psql -qh "$work" -U loja postgres -c 'select' >/dev/null 2>&1; do
    kill -0 $server || { cat "$work/log"; exit 1; }
    sleep 0.1
done

failed=0
number=0
for file in "$samples"/samples/*.mdb "$samples"/*.mdb; do
    number=$((number + 1))
    psql -qh "$work" -U loja postgres -c "create database loja$number template template0"
    address="postgresql:///loja$number?host=$work&user=loja"
    back=$work/volta.mdb
    rm -f "$back"
    if ! "$tool" info "$file" >/dev/null 2>"$work/why"; then
        echo "$(basename "$file"): skipped, it can't be read: $(cat "$work/why")"
        continue
    fi
    code=0
    "$tool" migrate "$file" "$address" >"$work/report" 2>"$work/why" || code=$?
    if [ $code != 0 ] && [ $code != 3 ]; then
        echo "$(basename "$file"): NOT MIGRATED: $(cat "$work/why")"
        failed=1
        continue
    fi
    "$tool" migrate "$address" "$back" >/dev/null
    "$tool" check "$back" >"$work/why" || { cat "$work/why"; failed=1; }
    different=
    while read -r table; do
        for form in --csv --json; do
            "$tool" dump "$file" "$table" $form >"$work/before"
            "$tool" dump "$back" "$table" $form >"$work/after"
            cmp -s "$work/before" "$work/after" || different="$different $table"
        done
    done < <("$tool" tables "$file" --json | sed -n 's/^{"tabela": "\(.*\)", "registros".*/\1/p')
    # Those among the tables of another program's own windows stay behind with these.
    "$tool" dump "$file" MSysRelationships --csv | grep -v ',MSys' | sort >"$work/before"
    "$tool" dump "$back" MSysRelationships --csv | sort >"$work/after"
    cmp -s "$work/before" "$work/after" || different="$different relationships"
    if command -v mdb-prop >/dev/null; then
        # Of a table without any, mdb-prop shows those of another.
        while read -r table; do
            mdb-prop "$file" "$table" >"$work/before" 2>&1 || true
            mdb-prop "$back" "$table" >"$work/after" 2>&1 || true
            cmp -s "$work/before" "$work/after" || different="$different properties-of-$table"
        done < <("$tool" dump "$file" MSysObjects --json |
            sed -n 's/.*"Name": "\([^"]*\)", "Type": 1, .*"Flags": 0, .*"LvProp": "[^"].*/\1/p')
        for query in $(mdb-queries -L "$file" 2>/dev/null); do
            mdb-queries "$file" "$query" >"$work/before" 2>&1 || true
            mdb-queries "$back" "$query" >"$work/after" 2>&1 || true
            cmp -s "$work/before" "$work/after" || different="$different query-$query"
        done
    fi
    echo "$(basename "$file"): $(tail -n 1 "$work/report" | sed 's/.*: \([0-9]* tabelas, [0-9]* registros\).*/\1/'),${different:- there and back the same}"
    grep '^aviso' "$work/report" || true
    [ -z "$different" ] || failed=1
done
exit $failed
