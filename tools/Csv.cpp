#include "tools/Csv.h"

#include "jet/Error.h"
#include "tools/ValueText.h"

#include <ostream>

namespace {

constexpr std::size_t kLargestRecord = std::size_t{64} << 20;
constexpr int kEnd = std::istream::traits_type::eof();

} // namespace

CsvReader::CsvReader(std::istream& in) : in_(in) {
    for (const char mark : {'\xEF', '\xBB', '\xBF'})
        if (in_.peek() == static_cast<unsigned char>(mark))
            in_.get();
}

void CsvReader::complain(const char* what) const {
    throw jet::Error(jet::Errc::corrupt, "Linha " + std::to_string(line_) + ": " + what + ".");
}

int CsvReader::take() {
    const int c = in_.get();
    if (in_.bad())
        throw jet::Error(jet::Errc::io, "A leitura falhou.");
    if (++size_ > kLargestRecord)
        complain("um registro é longo demais; falta uma aspa?");
    line_ += c == '\n' ? 1U : 0U;
    return c;
}

void CsvReader::readField(CsvField& field) {
    field = {};
    field.quoted = in_.peek() == '"';
    if (!field.quoted) {
        for (int next = in_.peek(); next != kEnd && next != ',' && next != '\r' && next != '\n';
             next = in_.peek()) {
            if (next == '"')
                complain("há uma aspa no meio de um campo sem aspas");
            field.text += static_cast<char>(take());
        }
        return;
    }
    take();
    while (true) {
        const int c = take();
        if (c == kEnd)
            complain("falta a aspa que fecha um campo");
        if (c == '"') {
            if (in_.peek() != '"')
                return;
            take();
        }
        field.text += static_cast<char>(c);
    }
}

bool CsvReader::next(std::vector<CsvField>& fields) {
    while (!single_ && (in_.peek() == '\r' || in_.peek() == '\n'))
        take();
    fields.clear();
    size_ = 0;
    const bool first = begin_ == 0;
    begin_ = line_;
    if (in_.peek() == kEnd)
        return false;
    while (true) {
        readField(fields.emplace_back());
        const int c = take();
        if (c == ',')
            continue;
        if (c == '\r' && in_.peek() == '\n')
            take();
        else if (c != kEnd && c != '\n' && c != '\r')
            complain("depois da aspa que fecha um campo só pode vir uma vírgula");
        single_ = first ? fields.size() == 1 : single_;
        return true;
    }
}

void writeCsv(const jet::Table& table, std::ostream& out) {
    const auto print = [&](std::string& line) {
        line.back() = '\r'; // in the place of the comma after the last field
        out << line << '\n';
        line.clear();
    };
    std::string line;
    for (const jet::Column& column : table.columns())
        line.append(csvOf(column.name)).append(",");
    print(line);
    jet::RowCursor row = table.scan();
    for (bool there = row.first(); there; there = row.next()) {
        for (std::size_t i = 0; i < table.columns().size(); ++i)
            line.append(csvOf(row.row().value(i))).append(",");
        print(line);
    }
}
