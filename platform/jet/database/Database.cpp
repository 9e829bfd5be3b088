#include "jet/Database.h"

#include "jet/FileSteps.h"
#include "jet/Names.h"
#include "jet/database/Catalog.h"
#include "jet/database/DatabaseParts.h"
#include "jet/index/TableBuilder.h"
#include "jet/page/DataPage.h"
#include "jet/page/MapLayout.h"
#include "jet/row/SystemTables.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace jet {

namespace {

/// The file, for writing if that is wanted and allowed.
File openFile(const std::filesystem::path& path, bool readOnly, Disk& disk,
              std::optional<Hindrance>& reason) {
    if (readOnly) {
        reason = {Hindrance::Why::forReading, "O banco de dados foi aberto só para consulta."};
        return {path, File::Mode::read, disk};
    }
    try {
        return {path, File::Mode::readWrite, disk};
    } catch (const Error& error) {
        if (error.code() != Errc::readOnly)
            throw;
        reason = {Hindrance::Why::forReading,
                  "O arquivo \"" + path.string() +
                      "\" não pode ser alterado: falta permissão de gravação. Os dados podem ser "
                      "consultados."};
        return {path, File::Mode::read, disk};
    }
}

void checkSize(const File& file, const Format& format) {
    const std::uint64_t size = file.size();
    if (size % format.pageSize != 0 || size / format.pageSize <= number(kRightsPage))
        throw Error(Errc::corrupt, "O arquivo \"" + file.path().string() +
                                       "\" está incompleto: o seu tamanho (" +
                                       std::to_string(size) +
                                       " bytes) não é o de um banco de "
                                       "dados inteiro.");
    if (size > format.largestFile)
        throw Error(Errc::corrupt, "O arquivo \"" + file.path().string() +
                                       "\" é maior do que o seu formato permite.");
}

} // namespace

Database::Database(const std::filesystem::path& path, const Options& options) {
    std::optional<Hindrance> reason;
    Disk& disk = options.disk ? *options.disk : Disk::system();
    File file = openFile(path, options.readOnly, disk, reason);
    Header header = readHeader(file);
    if (!header.password.empty() && header.password != options.password)
        throw Error(Errc::password, "O arquivo \"" + path.string() +
                                        "\" está protegido por uma senha, que não confere.");
    const TextSettings texts{options.codePage.value_or(header.codePage),
                             options.codePage.has_value()};
    const bool writable = !reason;
    parts_ = std::make_unique<Parts>(path, std::move(header), texts, std::move(file), writable);
    parts_->readOnly = std::move(reason);
    if (!(options.unshared && options.readOnly))
        parts_->share(writable, [this] { noticeChanges(); });
    checkSize(parts_->pager.file(), parts_->pager.format());
    const Pager::Section section(parts_->pager);
    loadCatalog();
}

Database::~Database() {
    if (!parts_)
        return;
    try {
        if (inTransaction())
            rollback();
        flush();
    } catch (...) {
        // Who needs to know calls flush() first; nobody is left to be told here.
        discard();
    }
}

void Database::create(const std::filesystem::path& path, Version version, Disk& disk) {
    const Format& format = formatOf(version);
    if (disk.exists(path))
        throw Error(Errc::exists, "O arquivo \"" + path.string() + "\" já existe.");
    // Made under another name, so that the file is whole whenever it is there.
    UnnamedFile draft(path, disk);
    File file(draft.path(), File::Mode::createNew, disk);
    {
        file.write(0, buildHeader(version));
        // Page 1: the map of free pages (all, from page 2 on) and a second, empty one.
        Bytes maps(format.pageSize);
        DataPageEditor::format(format, maps, number(kMapsOfFile));
        Bytes row = emptyMap(format);
        DataPageEditor editor(format, maps, kMapsOfFile);
        const Bytes empty = row;
        for (std::size_t page = number(kObjectsPage); page < 8 * format.mapBitmap; ++page)
            setBit(std::span(row).subspan(MapRowLayout::bitmap), page);
        editor.add(row);
        editor.add(empty);
        file.write(number(kMapsOfFile) * format.pageSize, maps);

        const TextSettings texts;
        Database made;
        made.parts_ = std::make_unique<Parts>(draft.path(), parseHeader(buildHeader(version)),
                                              texts, std::move(file), true);
        Parts& parts = *made.parts_;
        const std::vector<SystemTable> tables = systemTables(version);
        parts.work.begin();
        for (const SystemTable& table : tables)
            if (parts.pages.take() != table.page) // unreached: an empty file has them
                throw std::logic_error("system tables have fixed places");
        for (const SystemTable& table : tables)
            buildTable(parts.pager, parts.pages, table, parts.header.order,
                       parts.header.columnMark);
        Table objects(made, "MSysObjects", kObjectsPage);
        Table rights(made, "MSysACEs", kRightsPage);
        completeCatalog(objects, rights, newAccounts(version));
        made.commit();
    }
    requireAbsent(path, disk);
    draft.takeName();
}

void Database::loadCatalog() {
    std::map<std::string, Parts::Entry> catalog;
    Table objects(*this, "MSysObjects", kObjectsPage);
    for (CatalogEntry& entry : readCatalog(objects, parts_->pager.pageCount()))
        catalog.try_emplace(foldedName(entry.name),
                            Parts::Entry{entry.name, entry.definition, entry.user, nullptr});
    const auto hasIt = [&](const std::string& key, const Parts::Entry& known) {
        const auto found = catalog.find(key);
        return found != catalog.end() && found->second.definition == known.definition;
    };
    for (auto& [key, known] : parts_->catalog)
        if (known.table && !hasIt(key, known))
            parts_->lose(known, Error(Errc::notFound,
                                      "A tabela \"" + known.name +
                                          "\" não está mais no banco de dados: foi excluída ou "
                                          "mudou de nome enquanto estava em uso. Feche o programa "
                                          "e abra-o de novo."));
    for (auto& [key, known] : parts_->catalog)
        if (known.table)
            catalog.find(key)->second.table = std::move(known.table);
    parts_->catalog = std::move(catalog);
}

/// Another has written. Tables keep their object and their definition, which row changes don't
/// touch; those that a program has changed in structure, or taken away, are told apart here.
void Database::noticeChanges() {
    loadCatalog();
    for (auto& [key, entry] : parts_->catalog) {
        if (!entry.table)
            continue;
        entry.table->forgetRules();
        try {
            if (!sameStructure(entry.table->definition(),
                               parseDefinition(parts_->pager, entry.definition, parts_->texts)))
                throw Error(Errc::conflict, "A estrutura da tabela \"" + entry.name +
                                                "\" foi alterada por outro programa. Feche o "
                                                "programa e abra-o de novo.");
        } catch (const Error& error) {
            if (error.code() != Errc::conflict && error.code() != Errc::corrupt &&
                error.code() != Errc::unsupported)
                throw;
            parts_->lose(entry, error);
        }
    }
}

const std::filesystem::path& Database::path() const noexcept { return parts_->path; }
Version Database::version() const noexcept { return parts_->header.version; }
const std::optional<std::string>& Database::notice() const noexcept { return parts_->told(); }
const std::optional<std::string>& Database::damage() const noexcept { return parts_->damage; }
bool Database::isBroken() const noexcept { return parts_->sharing && parts_->sharing->isBroken(); }
std::optional<std::string> Database::readOnlyReason() {
    return Hindrance::told(parts_->hindrance(Presence::Look::around));
}

std::vector<std::string> Database::tableNames() const {
    parts_->pager.onSnapshot([] {}); // notices what others have written
    std::vector<std::string> names;
    for (const auto& [key, entry] : parts_->catalog)
        if (entry.user)
            names.push_back(entry.name);
    return names;
}

std::vector<std::string> Database::allTableNames() const {
    parts_->pager.onSnapshot([] {});
    std::vector<std::string> names;
    for (const auto& [key, entry] : parts_->catalog)
        names.push_back(entry.name);
    return names;
}

bool Database::hasTable(std::string_view name) const {
    parts_->pager.onSnapshot([] {});
    return parts_->catalog.contains(foldedName(name));
}

Table& Database::table(std::string_view name) {
    return parts_->pager.onSnapshot([&]() -> Table& {
        const auto found = parts_->catalog.find(foldedName(name));
        if (found == parts_->catalog.end())
            throw Error(Errc::notFound, "O banco de dados \"" + parts_->path.string() +
                                            "\" não tem a tabela \"" + std::string(name) + "\".");
        Parts::Entry& entry = found->second;
        if (!entry.table)
            entry.table = std::make_unique<Table>(*this, entry.name, entry.definition);
        return *entry.table;
    });
}

Table& Database::createTable(const TableSpec& spec) {
    spec.requireMakeable(TextCodec(version(), parts_->header.codePage));
    const bool own = !inTransaction();
    if (own)
        begin();
    try {
        claim();
        const UnitOfWork::Part uncounted(parts_->work); // it is no row
        if (hasTable(spec.name))
            throw Error(Errc::exists, "A tabela \"" + spec.name + "\" já existe.");
        Table& objects = this->table("MSysObjects");
        Table& rights = this->table("MSysACEs");
        const PageNo page = parts_->work.run([&] {
            const PageNo first = parts_->pages.take();
            buildTable(parts_->pager, parts_->pages, first, spec, parts_->header.order,
                       parts_->header.columnMark);
            return first;
        });
        addToCatalog(objects, rights, spec.name, page);
        parts_->work.noteCatalogChange();
        if (own)
            commit();
    } catch (...) {
        if (own)
            rollback();
        throw;
    }
    const Pager::Section section(parts_->pager);
    loadCatalog();
    return this->table(spec.name);
}

const SortOrder& Database::sortOrder() const noexcept { return parts_->header.order; }

int Database::compareText(std::string_view a, std::string_view b) const {
    return parts_->textOrder.compare(a, b);
}

void Database::appendTextKey(Bytes& key, std::string_view text) const {
    parts_->textOrder.appendSortKey(key, text);
}

void Database::begin() {
    parts_->requireWritable();
    parts_->work.begin();
}

void Database::rollback() {
    const bool catalogChanged = parts_->work.hasChangedCatalog();
    parts_->work.rollback();
    if (catalogChanged) {
        const Pager::Section section(parts_->pager);
        loadCatalog();
    }
}

void Database::commit() { parts_->work.commit(); }
void Database::commitLater() { parts_->work.commitLater(); }
void Database::claim() { const auto change = parts_->change(); }
bool Database::inTransaction() const noexcept { return parts_->work.isOpen(); }
void Database::asOne(const std::function<void()>& changes) {
    const auto change = parts_->change();
    parts_->work.run(changes);
}
void Database::flushIfDue() { parts_->work.flushIfDue(); }
void Database::flush() { parts_->work.flush(); }
void Database::discard() noexcept { parts_->work.discard(); }
Database::Tally Database::tally() const noexcept {
    return {parts_->work.written(), parts_->work.gathered()};
}
void Database::setSnapshotHold(std::chrono::milliseconds time) {
    if (parts_->sharing)
        parts_->sharing->snapshot().setHold(time);
}
std::uint64_t Database::changesByOthers() const noexcept {
    return parts_->sharing ? parts_->sharing->snapshot().changesByOthers() : 1;
}
bool Database::isTakenByOther() const {
    return parts_->sharing && parts_->sharing->isTakenByOther();
}
std::vector<std::string> Database::writersSince(std::uint64_t changes) const {
    return parts_->sharing ? parts_->sharing->snapshot().writersSince(changes)
                           : std::vector<std::string>();
}
std::uint64_t Database::generation() const noexcept { return parts_->pager.generation(); }
std::uint64_t Database::refreshes() const noexcept { return parts_->pager.refreshes(); }
void Database::breathe() noexcept { parts_->pager.breathe(); }
bool Database::isDisturbed() const noexcept { return parts_->pager.isDisturbed(); }
bool Database::keepsWriterWaiting() { return parts_->pager.keepsWriterWaiting(); }
Pager& Database::pager() noexcept { return parts_->pager; }

DatabaseTransaction::~DatabaseTransaction() {
    if (done_ || !database_.inTransaction())
        return;
    try {
        database_.rollback();
    } catch (...) {
        // Rolling back forgets pages in memory; only reading the catalog anew can fail, and whoever
        // asks for a table next is told.
    }
}

} // namespace jet
