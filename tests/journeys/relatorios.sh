#!/bin/bash
# Both reports of cheques are asked for, looked through, saved and printed, keyboard only, on a Jet 4 and
# on a Jet 3 database. What they must show is worked out anew from what an independent reader finds in
# the file, and other programs read it back from the PDF, the workbook, the CSV and the printer's paper.
# The paper needs a print queue of the journey's own, which only root can run; without it the rest runs.
source "$(dirname "$0")/journey.sh"

for tool in pdftotext pdfinfo; do
    if ! command -v "$tool" > /dev/null; then
        echo "skipped: $tool is not installed"
        exit 77
    fi
done
if ! /usr/bin/python3 -c 'import openpyxl' 2> /dev/null; then
    echo "skipped: there is no openpyxl for Python"
    exit 77
fi

cheques='Relatório de Cheques'
bounced='Relatório de Cheques Sem Fundos'

# ---- The printer

queue=''                     # its name, if there is one
sheets=$place/sheets.pdf     # what came out of it last

queue_answers() { lpstat -r | grep -q 'is running'; }

# A print server with one printer, whose sheets are pages of a file. Its filters run as another user, who
# must come through to their folders.
start_queue() {
    local dir=$place/cups driver=/usr/share/ppd/cupsfilters/Generic-PDF_Printer-PDF.ppd
    # No server at all: what the machine itself prints on is left alone.
    export CUPS_SERVER=$place/no-printers.sock
    if [ -n "$windows" ] || [ "$(id -u)" != 0 ] || [ ! -x /usr/sbin/cupsd ] || [ ! -e "$driver" ] ||
        ! command -v lpadmin > /dev/null; then
        echo "printing is left out: it takes root, cupsd, lpadmin and the PDF printer of its filters;" \
            "and a Windows has dialogs of its own"
        return
    fi
    mkdir -p "$dir"/{root,cache,spool,run,tmp}
    chmod 711 "$place" "$dir" "$dir/spool"
    chmod 1777 "$dir/tmp"
    printf '%s\n' "ServerRoot $dir/root" "CacheDir $dir/cache" "RequestRoot $dir/spool" \
        "StateDir $dir/run" "TempDir $dir/tmp" "AccessLog $dir/access_log" \
        "ErrorLog $dir/error_log" "PageLog $dir/page_log" 'SystemGroup root' 'FileDevice Yes' \
        > "$dir/cups-files.conf"
    printf '%s\n' "Listen $dir/cups.sock" 'DefaultAuthType None' 'Browsing Off' 'WebInterface No' \
        '<Location />' 'Order allow,deny' 'Allow all' '</Location>' \
        '<Policy default>' '<Limit All>' 'Order deny,allow' 'Allow all' '</Limit>' '</Policy>' \
        > "$dir/cupsd.conf"
    cp "$driver" "$dir/printer.ppd"
    /usr/sbin/cupsd -f -c "$dir/cupsd.conf" -s "$dir/cups-files.conf" > /dev/null 2>&1 &
    helpers+=($!)
    export CUPS_SERVER=$dir/cups.sock
    until_true "the print server" queue_answers
    queue=Balcao
    lpadmin -p "$queue" -E -v "file:$sheets" -P "$dir/printer.ppd" -o PageSize=A4 2> /dev/null
    lpadmin -d "$queue"
}

# Whether all jobs are done and the printer has sheets for us.
sheets_are_out() { [ -z "$(lpstat -o "$queue")" ] && pdfinfo "$sheets"; }

# The numbers of the report's pages that came out, sheet by sheet.
sheet_numbers() {
    pdftotext -layout "$sheets" - | tr '\f' '|' | grep -o 'Página: *[0-9]*\||' | grep -o '[0-9]*$\||' |
        xargs
}

# ask_printer: its dialog, with all its parts.
ask_printer() {
    rm -f "$sheets"
    keys ctrl+p
    until_window "Imprimir"
    keys alt+o
}

# page_range <pages>: in the dialog for the printer. The next field but one has the copies.
page_range() {
    keys alt+n Tab Tab Tab Down Down Tab
    typed "$1"
}

# refuse_range: that was typed, with a message; the focus is in it again.
refuse_range() {
    keys Return
    until_window "Impressão"       # "... não são páginas deste relatório, ..."
    keys Return
    until_window "Imprimir"
}

# expect_sheets <numbers>: of the pages, "|" after each sheet.
expect_sheets() {
    until_window "Valtrino - [$title]"
    until_true "the printed sheets" sheets_are_out
    [ "$(sheet_numbers)" = "$1" ] || fail "printed were the pages $(sheet_numbers) instead of $1"
}

# expect_no_sheets: nor anything on its way.
expect_no_sheets() {
    until_window "Valtrino - [$title]"
    [ -z "$(lpstat -o "$queue")" ] && [ ! -e "$sheets" ] || fail "it was printed after all"
}

# The dialog's ways to have something else printed than all of the report on show, which has six pages.
print_some_pages() {
    ask_printer
    page_range 2-3
    keys Tab Tab
    typed 2
    keys Return
    expect_sheets "2 | 3 | 2 | 3 |"

    ask_printer
    keys alt+r
    until_window "Propriedades da impressora"
    keys Tab Tab Tab Tab Tab Tab Tab Tab 2 Return      # two pages a sheet
    until_window "Imprimir"
    keys Return
    expect_sheets "1 2 | 3 4 | 5 6 |"

    ask_printer
    page_range 3-2
    refuse_range
    typed 8-9
    refuse_range
    typed 5-9
    keys Return
    expect_sheets "5 | 6 |"

    ask_printer
    keys Escape
    expect_no_sheets

    cupsreject "$queue"
    ask_printer
    keys Return
    until_window "Impressão"       # "A impressora não aceitou o relatório. ..."
    keys Return
    expect_no_sheets
    cupsaccept "$queue"
}

# A report long enough to be stopped while it is made for the printer: none of it comes out, and the next
# one is printed as if nothing had been.
stop_printing() {
    new_shop "${kept_by%% *}" --today 2026-11-20 --clients 40 --banks 6 --cheques 40000 --bounced 1
    start_program
    until_window "Valtrino"
    title=$cheques
    open_filter "$title"
    ask "" "" 2020-01-01 2026-12-31 Vencimento
    until_window "Valtrino - [$title]"
    open_filter "$title"           # it has stayed above the report
    keys Escape
    until_window "Valtrino - [$title]"
    ask_printer
    keys Return
    until_window "Imprimindo"
    keys Escape
    expect_no_sheets
    ask_printer
    page_range 2
    keys Return
    expect_sheets "2 |"
    leave
}

# print_report <pdf>: on the printer of the queue; its sheets become this file.
print_report() {
    rm -f "$sheets"
    keys ctrl+p
    until_window "Imprimir"
    keys Return
    until_window "Valtrino - [$title]"
    until_true "the printed sheets" sheets_are_out
    mv "$sheets" "$1"
}

# ---- The filter and the report

# typed_day <yyyy-mm-dd>: as a clerk types it, day first.
typed_day() { typed "${1:8:2}${1:5:2}${1:0:4}"; }

open_filter() {
    case $1 in
    "$cheques")
        keys alt+r c
        until_window "Relatório de Cheques Recebidos"
        ;;
    "$bounced")
        keys alt+r f
        until_window "Relatório de Cheques sem fundos"
        ;;
    esac
}

# ask <client> <bank> <first day> <last day> <order>: in the filter just opened; a text that isn't given
# leaves its field as it is.
ask() {
    [ -z "$1" ] || typed "$1"
    keys Return
    [ -z "$2" ] || typed "$2"
    keys Return
    typed_day "$3"
    keys Return
    typed_day "$4"
    keys Return
    typed "$5"
    [ "$5" != Vencimento ] || picture FrmFiltroRelat active
    keys Return alt+i
}

# save <key> <title of the dialog> <file>: the report on show.
save() {
    save_as "$@"
    until_window "Valtrino - [$title]"
}

# compare <client> <bank> <first> <last> <order> <file>...: the files of the report on show against the
# tables in the file.
compare() {
    tables "$place/tables"
    /usr/bin/python3 - "$place/tables" "$title" "$@" <<'PYTHON' || fail "$title of $*"
import bisect
import collections
import csv
import datetime
import io
import os
import re
import subprocess
import sys
import unicodedata
from decimal import Decimal
from xml.etree import ElementTree

import openpyxl

tables, title, client, bank, first, last, order, *files = sys.argv[1:]
table, orders = {
    "Relatório de Cheques": ("cheques", {
        "Banco": ("bank", "due"), "Número": ("number", "due"), "Cliente": ("client", "due"),
        "Emissão": ("issue", "due"), "Vencimento": ("due", "client")}),
    "Relatório de Cheques Sem Fundos": ("semfundos", {
        "Banco": ("bank", "issue"), "Número": ("number", "issue"), "Cliente": ("client", "issue"),
        "Data": ("issue", "client")}),
}[title]
XHTML = "{http://www.w3.org/1999/xhtml}"
headings = ["Cheque", "Nome", "Dt. Emissão", "Valor Cheque", "Banco", "Bom Para"]
Row = collections.namedtuple("Row", "number client issue value bank due")


def expect(true, what):
    if not true:
        sys.exit(what)


def same(found, expected, what):
    expect(found == expected, f"{what}: {found!r} instead of {expected!r}")


def program(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def records(name):
    with open(os.path.join(tables, name), encoding="utf-8", newline="") as stream:
        return list(csv.DictReader(stream))


def day(text):
    return datetime.date.fromisoformat(text) if text else None


def brazilian(date):
    return date.strftime("%d/%m/%Y") if date else ""


def money(value):
    return f"{value:,.2f}".translate(str.maketrans(",.", ".,"))


def key(row):
    """By which a row is sorted: empty first, texts by their letters and only then by accents."""
    parts = []
    for value in (getattr(row, name) for name in orders[order]):
        if isinstance(value, str):
            letters = unicodedata.normalize("NFD", value.casefold())
            plain = "".join(c for c in letters if not unicodedata.combining(c))
            value = (plain, letters)
        parts.append((value is not None, value) if value is not None else (False,))
    return parts


def expected_rows():
    clients = {r["codigo"]: r["nome"] for r in records("cliente_fornecedor")}
    banks = {r["codigo"]: r["nome"] for r in records("bancos")}
    return [Row(r["numero"], clients[r["cliente"]], day(r["data"]), Decimal(r["valor"]),
                banks[r["banco"]], day(r.get("bompara")))
            for r in records(table)
            if r["cliente"] in clients and r["banco"] in banks and first <= r["data"] <= last
            and client in ("", clients[r["cliente"]]) and bank in ("", banks[r["banco"]])]


expected = expected_rows()
period = f"{brazilian(day(first))} a {brazilian(day(last))}"
expect(len(expected) > 3, f"only {len(expected)} rows to compare")


def compare_rows(rows, file):
    same(len(rows), len(expected), f"rows of {file}")
    missing = collections.Counter(expected) - collections.Counter(rows)
    same(list(missing), [], f"rows missing in {file}")
    for above, below in zip(rows, rows[1:]):
        expect(key(above) <= key(below), f"{file}: {above} above {below}")


def read_csv(file):
    with open(file, "rb") as stream:
        content = stream.read()
    expect(content.startswith(b"\xef\xbb\xbf"), f"{file} doesn't say that it is UTF-8")
    same(content.count(b"\n"), content.count(b"\r\n"), f"ends of lines in {file}")
    lines = list(csv.reader(io.StringIO(content[3:].decode(), newline=""), delimiter=";"))
    same(lines[0], headings, f"headings of {file}")

    def date(text):
        return datetime.datetime.strptime(text, "%d/%m/%Y").date() if text else None
    return [Row(number, name, date(issue), Decimal(value.replace(",", ".")), bank_name, date(due))
            for number, name, issue, value, bank_name, due in lines[1:]]


def read_xlsx(file):
    sheet = openpyxl.load_workbook(file).active
    same(sheet.title, title, f"name of the sheet in {file}")
    lines = list(sheet.iter_rows())
    same([line[0].value for line in lines[:4]],
         [title, f"Referente ao período: {period}", f"Data: {brazilian(datetime.date.today())}", None],
         f"head of {file}")
    same([cell.value for cell in lines[4]], headings, f"headings of {file}")
    same([cell.value for cell in lines[-1]][2:4],
         ["Total:", float(sum(row.value for row in expected))], f"total of {file}")

    def date(cell):
        if cell.value is None:
            return None
        expect(cell.is_date and cell.number_format == "dd/mm/yyyy", f"{cell.value!r} is no date")
        return cell.value.date()

    def amount(cell):
        expect(cell.data_type == "n" and cell.number_format == "#,##0.00",
               f"{cell.value!r} is no amount")
        return Decimal(repr(cell.value))
    return [Row(number.value, name.value, date(issue), amount(value), bank_name.value, date(due))
            for number, name, issue, value, bank_name, due in lines[5:-1]]


def shows(found, whole):
    """A text may stand on two lines."""
    return "".join(found.split()) == "".join(whole.split())


DATE = re.compile(r"\d\d/\d\d/\d{4}")
COLUMNS = [33, 87, 112, 140, 175]      # where all but the first begin on paper, in millimetres


def cells(file):
    """The rows on each page, as lists of texts: what stands around the middle of a row's issue date."""
    Word = collections.namedtuple("Word", "column middle left text")
    for page in ElementTree.fromstring(program("pdftotext", "-bbox", file, "-")).iter(XHTML + "page"):
        words = []
        for word in page.iter(XHTML + "word"):
            left, top, right, bottom = (float(word.get(side)) / 72 * 25.4
                                        for side in ("xMin", "yMin", "xMax", "yMax"))
            words.append(Word(bisect.bisect(COLUMNS, (left + right) / 2), (top + bottom) / 2, left,
                              word.text))
        rows = []
        for date in sorted((w for w in words if w.column == 2 and DATE.fullmatch(w.text)
                            and w.middle > 40), key=lambda w: w.middle):
            row = [[] for _ in range(6)]
            for word in sorted(words, key=lambda w: (round(w.middle, 1), w.left)):
                if abs(word.middle - date.middle) < 2.6:
                    row[word.column].append(word.text)
            rows.append([" ".join(cell) for cell in row])
        yield rows


def compare_pdf(file, rows):
    facts = dict(line.split(":", 1) for line in program("pdfinfo", file).splitlines())
    expect(re.match(r"\s*59[45](\.\d+)? x 84[12](\.\d+)? pts", facts["Page size"]),
           f"paper of {file}: {facts['Page size']}")
    pages = program("pdftotext", "-layout", file, "-").split("\f")[:-1]
    same(len(pages), int(facts["Pages"]), f"pages of {file}")
    expect(len(pages) == 1 or len(rows) > 40, f"{len(rows)} rows on {len(pages)} pages of {file}")
    rest = iter(rows)
    for number, (page, shown) in enumerate(zip(pages, cells(file)), 1):
        lines = [" ".join(line.split()) for line in page.splitlines() if line.strip()]
        same(lines[:3], [f"{title} Página: {number}",
                         f"Referente ao período: {period} Data: {brazilian(datetime.date.today())}",
                         " ".join(headings)], f"head of page {number} of {file}")
        if number == len(pages):
            same(lines.pop(), f"Total: {money(sum(row.value for row in rows))}", f"foot of {file}")
        for found in shown:
            row = next(rest, None)
            expect(row, f"page {number} of {file}: {found}")
            cheque, name, issue, value, bank_name, due = found
            expect((issue, value, due) == (brazilian(row.issue), money(row.value), brazilian(row.due))
                   and shows(cheque, row.number) and shows(name, row.client)
                   and shows(bank_name, row.bank),
                   f"page {number} of {file}: {found} instead of {row}")
    same(next(rest, None), None, f"the row after the last one of {file}")


listed = read_csv(files[0])
compare_rows(listed, files[0])
for file in files[1:]:
    if file.endswith(".xlsx"):
        same(read_xlsx(file), listed, f"rows of {file}")
    else:
        compare_pdf(file, listed)
PYTHON
}

# report <client> <bank> <first> <last> <order>: asks for it in the filter and compares what is saved of
# it, and printed if there is a queue.
report() {
    local base=$place/home/relatorio
    rm -f "$base".* "$base"-impresso.pdf
    ask "$@"
    until_window "Valtrino - [$title]"
    open_filter "$title"     # it has stayed above the report
    keys Escape
    until_window "Valtrino - [$title]"
    picture frmRel_ChequesSF active
    save ctrl+shift+e "Salvar como CSV" "$base.csv"
    save ctrl+shift+s "Salvar como planilha" "$base.xlsx"
    if [ -z "$queue" ]; then
        keys ctrl+p
        until_window "Impressão"   # "É necessário existir uma impressora instalada no Windows."
        keys Return
        until_window "Valtrino - [$title]"
    fi
    save ctrl+s "Salvar como PDF" "$base.pdf"
    local files=("$base.csv" "$base.xlsx" "$base.pdf")
    if [ -n "$queue" ]; then
        print_report "$base-impresso.pdf"
        files+=("$base-impresso.pdf")
    fi
    compare "$@" "${files[@]}"
}

# ---- Looking

# What is seen of the pages, without the tools above and the clock below them.
look() { import -window root -crop 1366x580+0+140 -depth 8 rgb:- | md5sum; }
looks() { [ "$(look)" = "$1" ]; }
looks_else() { ! looks "$1"; }

# The report on show, of several pages, is paged, zoomed and searched.
look_through() {
    local first_page last_page seen last_number
    last_number=$(tail -n 1 "$place/home/relatorio.csv" | cut -d ';' -f 1)
    keys ctrl+Home ctrl+0
    sleep 1
    first_page=$(look)
    keys ctrl+End
    until_true "the last page" looks_else "$first_page"
    sleep 0.5
    last_page=$(look)
    keys ctrl+Home
    until_true "the first page again" looks "$first_page"

    keys ctrl+1
    until_true "the page in its size" looks_else "$first_page"
    sleep 0.5
    seen=$(look)
    keys ctrl+2
    until_true "the page's width" looks_else "$seen"
    keys ctrl+0
    until_true "the whole page again" looks "$first_page"

    keys ctrl+f
    typed "/2026"
    keys Return
    until_true "marks in the text" looks_else "$first_page"
    sleep 0.5
    seen=$(look)
    keys F3
    until_true "the next hit" looks_else "$seen"
    keys shift+F3
    until_true "the hit before" looks "$seen"

    keys ctrl+f
    typed "$last_number"
    keys Return
    until_true "the page of the last cheque" looks_else "$seen"
    keys Escape
    until_true "the last page without marks" looks "$last_page"
    keys ctrl+1
}

# ---- The journey

# most_frequent <table> <column of its name> <column of the cheques>: the name that most cheques have, of
# those that every keyboard can type.
most_frequent() {
    LC_ALL=C awk -F'|' -v name="$2" -v column="$3" '
        NR == FNR { if ($name ~ /^[ -~]+$/) names[$1] = $name; next }
        $column in names { count[$column]++ }
        END { for (code in count) print count[code] "|" names[code] }' \
        <(rows "$1") <(rows cheques) | sort -nr | sed q | cut -d '|' -f 2
}

# tables <folder>: all that the program has to show or could have changed.
tables() {
    mkdir -p "$1"
    for table in cliente_fornecedor bancos cheques semfundos; do
        exported "$table" > "$1/$table"
    done
}

start_screen
install_program
start_queue
printer=$queue
whole=yes                          # the first round; the next one looks at less, without a printer
for by in $kept_by; do
    new_shop "$by" --today 2026-11-20 --clients 40 --banks 6 --cheques 300 --bounced 60
    tables "$place/before"
    if [ ! "$whole" ]; then
        queue='' pictures=''
        export CUPS_SERVER=$place/no-printers.sock
    fi
    start_program
    until_window "Valtrino"

    title=$cheques
    open_filter "$title"
    ask "" "" 1990-01-01 1990-12-31 ""
    until_window "Impressão"       # "Não há registros a imprimir."
    keys Return
    until_window "Relatório de Cheques Recebidos"
    keys Escape
    until_window "Valtrino"

    open_filter "$title"
    if [ "$whole" ]; then
        report "" "" 2026-01-01 2026-12-31 Vencimento
        look_through
        [ -z "$queue" ] || print_some_pages
    else
        report "$(most_frequent cliente_fornecedor 2 2)" "" 2025-01-01 2026-11-20 Número
    fi

    open_filter "$title"           # while the report is on show
    keys Escape
    until_window "Valtrino - [$title]"

    title=$bounced
    open_filter "$title"
    if [ "$whole" ]; then
        report "" "" 2024-01-01 2026-06-30 Cliente
    else
        report "" "$(most_frequent bancos 3 3)" 2025-01-01 2026-12-31 Data
    fi

    leave
    tables "$place/after"
    diff -r "$place/before" "$place/after" || fail "reports changed the data"
    expect_sound
    whole=''
done
if [ -n "$printer" ]; then
    queue=$printer
    export CUPS_SERVER=$place/cups/cups.sock
    stop_printing
fi
echo "passed"
