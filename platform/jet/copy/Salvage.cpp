#include "jet/Salvage.h"

#include "jet/Check.h"
#include "jet/Database.h"
#include "jet/FileSteps.h"
#include "jet/copy/CopyPlan.h"
#include "jet/database/Catalog.h"
#include "jet/share/Recovery.h"

#include <algorithm>

namespace jet {

namespace {

constexpr const char* kUseless =
    "ao lado do arquivo está o registro de uma gravação interrompida, que não pôde ser usado, e o "
    "que ela mudava pode estar pela metade: ";

/// A file without what a station that died has left half written: itself, or a copy in which that
/// was undone, with the journal that lies beside it.
class Undone {
public:
    Undone(const std::filesystem::path& source, const std::filesystem::path& target, Losses& losses,
           Disk& disk)
        : path_(source) {
        const auto tell = [&](const std::string& what) {
            losses.tell({Loss::What::note, "", PageNo{0}, {}, what});
        };
        try {
            const std::filesystem::path original = disk.resolved(source);
            if (!hasJournal(original, disk))
                return;
            copy_.emplace(target, disk);
            copyFile(original, *copy_, original);
            copyFile(Journal::pathFor(original), Journal::pathFor(copy_->path()), original, disk);
            const Recovery done = recover(copy_->path(), disk);
            if (!done.aside.empty())
                File::remove(disk, done.aside);
            if (done.outcome == Recovery::Outcome::undone)
                tell("uma gravação tinha sido interrompida no meio; ela foi desfeita numa cópia, e "
                     "o salvamento partiu dela");
            else if (done.outcome == Recovery::Outcome::setAside)
                tell(std::string(kUseless) + done.reason);
            path_ = copy_->path();
        } catch (const Error& error) {
            if (error.code() == Errc::full || error.code() == Errc::notFound)
                throw;
            tell(std::string(kUseless) + error.what());
            copy_.reset();
        }
    }
    [[nodiscard]] const std::filesystem::path& path() const noexcept { return path_; }

private:
    std::filesystem::path path_;
    std::optional<UnnamedFile> copy_; ///< with it goes what lies beside it
};

/// Enters into the new file's catalog what the old one's didn't have.
void enterUnlisted(const UnnamedFile& copy, const SourceFile& source,
                   const std::vector<RewrittenTable>& tables) {
    Database database(copy.path(), {false, {}, source.header().password, &copy.disk()});
    Table objects(database, "MSysObjects", kObjectsPage);
    Table rights(database, "MSysACEs", kRightsPage);
    DatabaseTransaction changes(database);
    completeCatalog(objects, rights, newAccounts(source.header().version));
    for (const RewrittenTable& table : tables)
        if (!table.listed && (table.user || table.beside))
            addToCatalog(objects, rights, table.name, table.page());
    changes.commit();
}

/// What each table has got, and rows that it says it had and nobody has met.
void countRows(Losses& losses, const std::vector<RewrittenTable>& tables,
               const std::vector<std::uint32_t>& said) {
    for (std::size_t i = 0; i < tables.size(); ++i) {
        const RewrittenTable& table = tables[i];
        if (!table.user || table.beside)
            continue;
        SavedTable saved{table.name, table.rows, table.apart.size(), {}, said[i]};
        for (const RewrittenTable& other : tables)
            if (saved.apart > 0 && other.beside && other.source == table.source)
                saved.apartName = other.name;
        if (saved.rows + saved.apart < saved.said)
            losses.tell({Loss::What::note,
                         table.name,
                         table.before(),
                         {},
                         "a tabela dizia ter " + std::to_string(saved.said) +
                             " registros; foram lidos " +
                             std::to_string(saved.rows + saved.apart)});
        losses.report().tables.push_back(std::move(saved));
    }
}

} // namespace

SalvageReport salvage(const std::filesystem::path& source, const std::filesystem::path& target,
                      const Progress& progress, Disk& disk) {
    requireAbsent(target, disk);
    Losses losses(Losses::Source::damaged);
    const Undone whole(source, target, losses, disk);
    UnnamedFile copy(target, disk);
    SourceFile from(whole.path(), losses, disk);
    std::vector<RewrittenTable> tables =
        planDamaged(from, std::filesystem::path(copy.path()).replace_extension(".modelo"));
    std::vector<std::uint32_t> said;
    said.reserve(tables.size());
    for (const RewrittenTable& table : tables)
        said.push_back(table.image.rowCount());

    {
        // Closed before anybody works in it: some systems give nobody a file that another writes.
        NewFile file(copy.path(), from.format(), disk);
        file.takeRightsOf(source);
        Rewriter(from, file, tables, progress).run();
        file.finish(from.newHeader());
    }
    enterUnlisted(copy, from, tables);
    countRows(losses, tables, said);
    losses.report().check = check(copy.path(), disk);
    requireAbsent(target, disk);
    copy.takeName();
    return std::move(losses.report());
}

} // namespace jet
