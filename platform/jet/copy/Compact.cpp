#include "jet/Compact.h"

#include "jet/Check.h"
#include "jet/Database.h"
#include "jet/FileSteps.h"
#include "jet/copy/CopyPlan.h"
#include "jet/database/DatabasePager.h"
#include "jet/row/LongValues.h"
#include "jet/row/RowEncoder.h"
#include "jet/share/FileAlone.h"
#include "jet/share/Recovery.h"

#include <algorithm>
#include <memory>

namespace jet {

namespace {

std::string firstError(const Report& report) {
    const auto error =
        std::ranges::find(report.findings, Finding::Severity::error, &Finding::severity);
    return error == report.findings.end() ? "" : error->sentence;
}

/// The copy against its source, both read as everybody reads them.
class Comparison {
public:
    Comparison(const std::filesystem::path& before, const std::filesystem::path& after,
               const std::string& password, Disk& disk)
        : before_(before, asItStands(password, disk)), after_(after, asItStands(password, disk)) {}

    /// @throws Error{corrupt} at the first difference.
    void run() {
        const std::vector<std::string> names = before_.allTableNames();
        require(names == after_.allTableNames(), "as tabelas");
        for (const std::string& name : names)
            numbers_.add(before_.table(name).definition().page(),
                         after_.table(name).definition().page());
        for (const std::string& name : names)
            compare(before_.table(name), after_.table(name));
    }

private:
    static Database::Options asItStands(const std::string& password, Disk& disk) {
        Database::Options options;
        options.readOnly = options.unshared = true;
        options.password = password;
        options.disk = &disk;
        return options;
    }
    static void require(bool same, const std::string& what) {
        if (!same)
            throw Error(Errc::corrupt,
                        "A cópia não foi aproveitada: " + what + " não são as do original.");
    }

    void compare(Table& before, Table& after) {
        table_ = "da tabela \"" + before.name() + "\"";
        require(std::ranges::equal(before.columns(), after.columns(),
                                   [](const Column& a, const Column& b) {
                                       return a.name == b.name && a.type == b.type;
                                   }),
                "as colunas " + table_);
        compareIndexes(before, after);
        Pager& was = DatabasePager::of(before_);
        Pager& is = DatabasePager::of(after_);
        require(DefinitionImage(was, before.definition()).lastNumber() ==
                    DefinitionImage(is, after.definition()).lastNumber(),
                "as numerações " + table_);
        RowCursor row = before.scan();
        RowCursor copy = after.scan();
        bool there = row.first();
        bool also = copy.first();
        for (; there && also; there = row.next(), also = copy.next())
            require(same(before, row, copy, after), "as linhas " + table_);
        require(there == also, "as linhas " + table_);
    }

    void compareIndexes(const Table& before, const Table& after) {
        const auto& was = before.definition().logicalIndexes;
        const auto& is = after.definition().logicalIndexes;
        require(std::ranges::equal(was, is,
                                   [](const LogicalIndex& a, const LogicalIndex& b) {
                                       return a.name == b.name && a.number == b.number &&
                                              a.realIndex == b.realIndex && a.kind == b.kind;
                                   }) &&
                    before.indexes().size() == after.indexes().size(),
                "os índices " + table_);
        const auto ends =
            DefinitionImage(DatabasePager::of(before_), before.definition()).relationshipEnds();
        const auto now =
            DefinitionImage(DatabasePager::of(after_), after.definition()).relationshipEnds();
        require(std::ranges::equal(ends, now,
                                   [&](const auto& a, const auto& b) {
                                       return a.logical == b.logical && a.partner == b.partner &&
                                              numbers_.translated(number(a.otherTable)) ==
                                                  number(b.otherTable);
                                   }),
                "os relacionamentos " + table_);
    }

    bool same(const Table& before, const RowCursor& row, const RowCursor& copy,
              const Table& after) {
        const TableDefinition& table = before.definition();
        StoredRow was = storedRow(table, row.row());
        const StoredRow is = storedRow(after.definition(), copy.row());
        for (std::size_t i = 0; i < was.size(); ++i) {
            const Column& column = table.columns[i];
            if (was[i].present != is[i].present)
                return false;
            if (!was[i].present)
                continue;
            if (isLongValue(column.type)) {
                if (readLongValue(DatabasePager::of(before_), was[i].bytes, row.id().page) !=
                    readLongValue(DatabasePager::of(after_), is[i].bytes, copy.id().page))
                    return false;
                continue;
            }
            if (was[i].bytes.size() == 4 && holdsDefinitionPage(before.name(), column.name))
                store<std::uint32_t>(was[i].bytes.data(),
                                     numbers_.translated(load<std::uint32_t>(was[i].bytes.data())));
            if (was[i].bytes != is[i].bytes)
                return false;
        }
        return true;
    }

    Database before_;
    Database after_;
    PageNumbers numbers_;
    std::string table_;
};

Compacted copySound(const std::filesystem::path& source, const UnnamedFile& copy,
                    const Progress& progress) {
    Disk& disk = copy.disk();
    Losses none(Losses::Source::sound);
    SourceFile from(source, none, disk);
    const Report before = check(source, disk);
    if (!before.sound())
        throw Error(Errc::corrupt,
                    "O arquivo tem erros e não foi compactado: " + firstError(before) +
                        ". Use o salvamento para aproveitar o que se lê dele.");
    std::vector<RewrittenTable> tables = planSound(from);
    NewFile file(copy.path(), from.format(), disk);
    file.takeRightsOf(source);
    Rewriter(from, file, tables, progress).run();
    file.finish(from.newHeader());

    const Report after = check(copy.path(), disk);
    if (!after.sound())
        throw Error(Errc::corrupt, "A cópia não foi aproveitada: a verificação diz que " +
                                       firstError(after) + ".");
    Comparison(source, copy.path(), from.header().password, disk).run();
    return {before.pages, after.pages, after.tables, after.rows};
}

/// Nobody else in the file, and what a station that died has left half done undone; nothing where
/// the file can't be written.
std::unique_ptr<FileAlone> takeAlone(const std::filesystem::path& source, Disk& disk) {
    try {
        auto alone = std::make_unique<FileAlone>(source, disk);
        recover(source, disk);
        return alone;
    } catch (const Error& error) {
        if (error.code() != Errc::readOnly)
            throw;
        return nullptr;
    }
}

} // namespace

Compacted compact(const std::filesystem::path& source, const std::filesystem::path& target,
                  const Progress& progress, Disk& disk) {
    requireAbsent(target, disk);
    const auto alone = takeAlone(source, disk);
    UnnamedFile copy(target, disk);
    Compacted result;
    if (!unchangedWhile(
            source, [&] { result = copySound(source, copy, progress); }, disk))
        throw Error(Errc::conflict, "O arquivo foi alterado durante a compactação, que não foi "
                                    "aproveitada. Repita-a com o programa fechado.");
    requireAbsent(target, disk);
    copy.takeName();
    return result;
}

} // namespace jet
