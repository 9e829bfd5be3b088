#include "jet/Database.h"
#include "jet/Error.h"
#include "jet/FileSteps.h"
#include "jet/Utf8.h"
#include "tools/Commands.h"
#include "tools/Csv.h"
#include "tools/ProgressLine.h"
#include "tools/ValueText.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <memory>

namespace {

// ---- out of the file

[[noreturn]] void failToWrite(const std::filesystem::path& target) {
    throw jet::Error(jet::Errc::io, "Não foi possível gravar o arquivo \"" + target.string() +
                                        "\": falta espaço no disco ou permissão.");
}

/// A table's CSV, under a name of its own until all of them are there.
class ExportedTable {
public:
    ExportedTable(const jet::Table& table, const std::filesystem::path& folder)
        : target_(folder / fileName(table.name())), part_(target_) {
        jet::requireAbsent(target_, jet::Disk::system());
        std::ofstream out(part_.path(), std::ios::binary);
        writeCsv(table, out);
        out.close();
        int error = 0;
        const auto written = part_.disk().open(part_.path(), jet::Disk::Mode::readWrite, error);
        if (!out || !written || written->sync() != 0)
            failToWrite(target_);
    }
    void keep() {
        jet::requireAbsent(target_, jet::Disk::system());
        part_.takeName();
    }
    [[nodiscard]] const std::filesystem::path& path() const noexcept { return target_; }

private:
    /// Of no system's folders, drives or patterns.
    static std::filesystem::path fileName(std::string table) {
        constexpr std::string_view kNotInNames = "/\\:*?\"<>|";
        std::ranges::replace_if(
            table, [&](char c) { return kNotInNames.find(c) != std::string_view::npos; }, '_');
        return jet::Disk::pathOf(table + ".csv");
    }

    std::filesystem::path target_;
    jet::UnnamedFile part_;
};

// ---- into the file

/// Whether a row, not the file or the disk, is at fault.
bool isOfTheRow(const jet::Error& error) {
    using enum jet::Errc;
    const auto codes = {duplicate, nullValue, rule, related, tooLong, outOfRange};
    return std::ranges::find(codes, error.code()) != codes.end();
}

bool isUtf8(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = jet::utf8At(text, at).length;
        if (length == 0)
            return false;
        at += length;
    }
    return true;
}

/// What the rows of a CSV file become in a table.
class Import {
public:
    Import(jet::Table& table, const std::vector<CsvField>& names) : table_(table) {
        for (const CsvField& name : names) {
            if (!isUtf8(name.text))
                throw jet::Error(jet::Errc::corrupt,
                                 "A primeira linha não tem nomes de campos em UTF-8.");
            const auto column = table.findColumn(name.text);
            if (!column)
                throw jet::Error(jet::Errc::notFound, "A tabela \"" + table.name() +
                                                          "\" não tem o campo \"" + name.text +
                                                          "\", que está na primeira linha.");
            if (std::ranges::find(columns_, *column) != columns_.end())
                throw jet::Error(jet::Errc::duplicate, "O campo \"" + name.text +
                                                           "\" está duas vezes na primeira linha.");
            columns_.push_back(*column);
        }
    }

    void add(const std::vector<CsvField>& fields, std::uint64_t line) {
        ++rows_;
        if (auto reason = refusalOf(fields)) {
            if (refused_++ < kMostTold)
                told_.push_back("linha " + std::to_string(line) + ": " + *reason);
        }
    }

    [[nodiscard]] std::uint64_t rows() const noexcept { return rows_; }
    [[nodiscard]] std::uint64_t refused() const noexcept { return refused_; }
    void printRefused() const {
        for (const std::string& line : told_)
            std::cout << line << '\n';
        if (refused_ > told_.size())
            std::cout << "(mais " << refused_ - told_.size() << " recusados)\n";
    }

private:
    static constexpr std::size_t kMostTold = 100;

    std::optional<std::string> refusalOf(const std::vector<CsvField>& fields) {
        if (fields.size() != columns_.size())
            return "tem " + std::to_string(fields.size()) + " campos, e a primeira linha tem " +
                   std::to_string(columns_.size()) + ".";
        std::vector<jet::Assignment> given;
        given.reserve(fields.size());
        for (std::size_t i = 0; i < fields.size(); ++i) {
            const CsvField& field = fields[i];
            const jet::Column& column = table_.columns()[columns_[i]];
            const bool null = field.text.empty() && !field.quoted;
            if (!isUtf8(field.text))
                return "o campo \"" + column.name + "\" não está em UTF-8.";
            auto value = null ? jet::Value() : valueFrom(column, field.text);
            if (!value)
                return "o campo \"" + column.name + "\" não pode ter \"" + field.text + "\".";
            given.push_back({columns_[i], std::move(*value)});
        }
        try {
            table_.insert(given);
        } catch (const jet::Error& error) {
            if (!isOfTheRow(error))
                throw;
            return error.what();
        }
        return std::nullopt;
    }

    jet::Table& table_;
    std::vector<std::size_t> columns_; ///< of the fields
    std::uint64_t rows_ = 0;
    std::uint64_t refused_ = 0;
    std::vector<std::string> told_;
};

} // namespace

int runExport(const Arguments& arguments) {
    const std::filesystem::path folder = arguments.folder(1);
    jet::Database::Options onlyToRead;
    onlyToRead.readOnly = true;
    jet::Database database(arguments.file(), onlyToRead);
    const std::vector<std::string> names = database.tableNames();
    std::vector<std::unique_ptr<ExportedTable>> files;
    files.reserve(names.size());
    ProgressLine progress;
    for (const std::string& name : names) {
        progress(name, files.size(), names.size());
        files.push_back(std::make_unique<ExportedTable>(database.table(name), folder));
    }
    for (const auto& file : files)
        file->keep();
    progress.clear();
    for (std::size_t i = 0; i < names.size(); ++i)
        std::cout << names[i] << ": " << database.table(names[i]).rowCount() << " registros em "
                  << files[i]->path().string() << '\n';
    return kDone;
}

int runImport(const Arguments& arguments) {
    const std::filesystem::path source = arguments.file(2);
    std::ifstream in(source, std::ios::binary);
    if (!in)
        throw jet::Error(jet::Errc::notFound,
                         "Não foi possível abrir o arquivo \"" + source.string() + "\".");
    jet::Database database(arguments.file());
    jet::Table& table = database.table(arguments.operand(1));
    CsvReader reader(in);
    std::vector<CsvField> fields;
    if (!reader.next(fields))
        throw jet::Error(jet::Errc::corrupt, "O arquivo \"" + source.string() +
                                                 "\" está vazio: faltam os nomes dos campos.");
    Import import(table, fields);
    ProgressLine progress;
    const std::uint64_t size = std::filesystem::file_size(source);
    jet::DatabaseTransaction all(database);
    database.claim();
    while (reader.next(fields)) {
        import.add(fields, reader.line());
        if (import.rows() % 256 == 0)
            progress(table.name(), static_cast<std::uint64_t>(in.tellg()), size);
    }
    const bool keep = import.refused() == 0 || arguments.has("--skip");
    if (keep)
        all.commit();
    progress.clear();
    import.printRefused();
    if (!keep)
        std::cout << "Nada foi gravado: " << import.refused() << " de " << import.rows()
                  << " registros não são aceitos.\n";
    else
        std::cout << import.rows() - import.refused() << " registros gravados na tabela \""
                  << table.name() << "\", " << import.refused() << " recusados.\n";
    return !keep ? kProblems : import.refused() > 0 ? kWarnings : kDone;
}
