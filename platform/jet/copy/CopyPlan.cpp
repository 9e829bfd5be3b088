#include "jet/copy/CopyPlan.h"

#include "jet/Database.h"
#include "jet/FileSteps.h"
#include "jet/Names.h"
#include "jet/index/RowKey.h"
#include "jet/index/TableBuilder.h"
#include "jet/row/RelationshipPairs.h"
#include "jet/row/SystemTables.h"

#include <algorithm>
#include <map>
#include <set>
#include <system_error>

namespace jet {

namespace {

/// A row of the catalog.
struct Object {
    RowId row;
    std::uint32_t id = 0;
    std::uint32_t parent = 0;
    std::string name;
    std::int16_t type = 0;
    std::uint32_t flags = 0;

    [[nodiscard]] PageNo definition() const { return static_cast<PageNo>(id & kObjectPageMask); }
    [[nodiscard]] bool user() const { return isUserTable(flags, name); }
};

/// The fields of rows of one table, by the names of its columns.
class Fields {
public:
    explicit Fields(const TableDefinition& table) : table_(table) {}

    [[nodiscard]] const Column* find(const char* name) const {
        for (const Column& column : table_.columns)
            if (foldedName(column.name) == foldedName(name))
                return &column;
        return nullptr;
    }
    template <class T>
    [[nodiscard]] T number(const RowParts& row, const char* name) const {
        const Column* column = find(name);
        const auto stored = column ? row.field(*column) : std::nullopt;
        return stored && stored->size() == sizeof(T) ? load<T>(stored->data()) : T{};
    }
    [[nodiscard]] std::string text(const RowParts& row, const char* name) const {
        const Column* column = find(name);
        const auto stored = column ? row.field(*column) : std::nullopt;
        return stored ? column->codec.decode(*stored) : std::string();
    }

private:
    const TableDefinition& table_;
};

std::vector<Object> readObjects(SourceTable& objects) {
    const Fields fields(objects.definition());
    std::vector<Object> found;
    objects.eachRow(false, [&](const SourceRow& row) {
        found.push_back({row.id, fields.number<std::uint32_t>(row.parts, "Id"),
                         fields.number<std::uint32_t>(row.parts, "ParentId"),
                         fields.text(row.parts, "Name"),
                         fields.number<std::int16_t>(row.parts, "Type"),
                         fields.number<std::uint32_t>(row.parts, "Flags")});
    });
    return found;
}

RewrittenTable rewritten(SourceFile& source, const std::string& name, bool user,
                         TableDefinition definition) {
    DefinitionImage image(source.pager(), definition);
    if (source.damaged())
        image.repair(definition);
    return {.source = std::make_shared<SourceTable>(source, name, std::move(definition)),
            .image = std::move(image),
            .name = name,
            .user = user};
}

/// The definitions that a file of this version has where its own are lost.
class StandardTables {
public:
    StandardTables(const std::filesystem::path& scratch, Version version, Disk& disk)
        : file_(scratch, disk) {
        Database::create(file_.path(), version, disk);
    }

    [[nodiscard]] RewrittenTable table(SourceFile& source, const SystemTable& wanted) const {
        Pager pager(File(file_.path(), File::Mode::read, file_.disk()), source.format(), false);
        TableDefinition definition = parseDefinition(pager, wanted.page, {});
        DefinitionImage image(pager, definition);
        definition.ownedMap = {}; // where the rows are isn't known: there is no map on page 0
        return {.source =
                    std::make_shared<SourceTable>(source, wanted.table.name, std::move(definition)),
                .image = std::move(image),
                .name = wanted.table.name};
    }

private:
    UnnamedFile file_; ///< never gets the name it is made for
};

class DamagedPlan {
public:
    DamagedPlan(SourceFile& source, std::filesystem::path scratch)
        : source_(source), scratch_(std::move(scratch)) {}

    std::vector<RewrittenTable> run() {
        for (const SystemTable& table : systemTables(source_.header().version))
            tables_.push_back(systemTable(table));
        SourceTable& objects = *tables_.front().source;
        findApart(tables_.front());
        readCatalog(objects);
        findUnlisted();
        dropHomeless();
        for (RewrittenTable& table : tables_)
            if (table.before() != kObjectsPage) {
                dropUnknownOrder(table);
                findApart(table);
            }
        dropRelationships();
        addTablesBeside();
        return std::move(tables_);
    }

private:
    void tell(Loss::What what, const std::string& table, PageNo page, std::string reason) {
        source_.losses().tell({what, table, page, {}, std::move(reason)});
    }

    /// The definition on `page`, if it parses and none of its pages is another's.
    std::optional<TableDefinition> definitionOn(PageNo page) {
        try {
            TableDefinition found = parseDefinition(source_.pager(), page, source_.texts());
            if (found.columns.empty() || std::ranges::any_of(found.pages, [&](PageNo part) {
                    return claimed_.contains(part);
                }))
                return std::nullopt;
            (void)DefinitionImage(source_.pager(), found);
            claimed_.insert(found.pages.begin(), found.pages.end());
            return found;
        } catch (const Error&) {
            return std::nullopt;
        }
    }

    RewrittenTable systemTable(const SystemTable& wanted) {
        std::optional<TableDefinition> found = definitionOn(wanted.page);
        if (found) {
            const Fields fields(*found);
            const bool whole =
                std::ranges::all_of(wanted.table.columns, [&](const ColumnSpec& column) {
                    const Column* there = fields.find(column.name.c_str());
                    return there != nullptr && there->type == column.type;
                });
            if (whole && found->realIndexes.size() >= wanted.table.indexes.size())
                return rewritten(source_, wanted.table.name, false, std::move(*found));
        }
        claimed_.insert(wanted.page);
        tell(Loss::What::note, wanted.table.name, wanted.page,
             "a definição da tabela de sistema estava danificada e foi refeita");
        if (!standard_)
            standard_.emplace(scratch_, source_.header().version, source_.disk());
        return standard_->table(source_, wanted);
    }

    void readCatalog(SourceTable& objects) {
        for (RewrittenTable& core : tables_)
            core.listed = false;
        for (Object& object : readObjects(objects)) {
            if (std::ranges::binary_search(tables_.front().apart,
                                           static_cast<std::uint32_t>(packed(object.row))))
                continue;
            if (object.name.empty() || object.id == 0 ||
                (object.id >= kFirstUserDefinition && object.id <= kObjectPageMask &&
                 object.type != tableObject)) {
                leaveOut(tables_.front(), object.row);
                source_.losses().tell({Loss::What::row, "MSysObjects", object.row.page,
                                       object.row.slot,
                                       "o objeto \"" + object.name +
                                           "\" não tem nome, ou o seu número não é o do seu tipo"});
                continue;
            }
            if (isDamagedCore(object)) {
                leaveOut(tables_.front(), object.row);
                tell(Loss::What::note, "MSysObjects", object.row.page,
                     "o objeto \"" + object.name + "\" do sistema estava danificado; foi refeito");
                continue;
            }
            names_.insert(foldedName(object.name));
            if (object.type == linkedTableObject || object.type == linkedOdbcObject)
                linked_.insert(foldedName(object.name));
            objects_.push_back(object);
            if (object.type != tableObject)
                continue;
            const PageNo page = object.definition();
            const bool plain = object.id == number(page);
            const bool core = number(page) < kFirstUserDefinition;
            if (core && plain && number(page) >= kFirstDefinition &&
                !tables_[number(page) - kFirstDefinition].listed) {
                tables_[number(page) - kFirstDefinition].listed = true;
                continue;
            }
            std::optional<TableDefinition> found;
            if (!core && plain)
                found = definitionOn(page);
            if (!found) {
                leaveOut(tables_.front(), object.row);
                lost_.push_back(object);
                continue;
            }
            tables_.push_back(rewritten(source_, object.name, object.user(), std::move(*found)));
        }
    }

    /// Whether an object stands where one of the system's own belongs, and isn't it.
    static bool isDamagedCore(const Object& object) {
        return std::ranges::any_of(kCoreObjects, [&](const CoreObject& core) {
            const bool table = core.id < kFirstUserDefinition;
            return core.id == object.id
                       ? core.parent != object.parent || table != (object.type == tableObject)
                       : core.parent == object.parent &&
                             foldedName(core.name) == foldedName(object.name);
        });
    }

    static void leaveOut(RewrittenTable& table, RowId row) {
        const auto at = static_cast<std::uint32_t>(packed(row));
        table.leftOut.insert(std::ranges::lower_bound(table.leftOut, at), at);
    }

    /// Definitions that the catalog doesn't know. If one table has lost its definition and one
    /// definition its name, they belong together.
    void findUnlisted() {
        const std::size_t first = tables_.size();
        for (std::uint32_t i = kFirstDefinition; i < source_.pager().pageCount(); ++i) {
            const auto page = static_cast<PageNo>(i);
            if (source_.kind(page) != PageKind::definition || source_.isFree(page) ||
                claimed_.contains(page))
                continue;
            if (auto found = definitionOn(page)) {
                const std::string name = freeName("recuperada_" + std::to_string(i));
                tables_.push_back(rewritten(source_, name, true, std::move(*found)));
                tables_.back().listed = false;
            }
        }
        if (lost_.size() == 1 && tables_.size() == first + 1) {
            tables_.back().name = lost_.front().name;
            tables_.back().source->rename(lost_.front().name);
            lost_.clear();
        }
        for (std::size_t i = first; i < tables_.size(); ++i)
            tell(Loss::What::note, tables_[i].name, tables_[i].before(),
                 "a tabela não estava no catálogo e foi encontrada pela sua definição");
        for (const Object& object : lost_)
            tell(Loss::What::table, object.name, object.definition(),
                 "a definição da tabela não pode ser lida; páginas com registros dela: " +
                     std::to_string(source_.pagesOf(number(object.definition())).size()));
    }

    /// Objects whose folder is lost. A table gets a new place under its name.
    void dropHomeless() {
        std::set<std::uint32_t> homes{kRootObject};
        for (const CoreObject& core : kCoreObjects)
            homes.insert(core.id);
        for (const Object& object : objects_)
            homes.insert(object.id);
        for (const Object& object : objects_) {
            if (homes.contains(object.parent))
                continue;
            leaveOut(tables_.front(), object.row);
            const auto table = std::ranges::find_if(tables_, [&](const RewrittenTable& candidate) {
                return candidate.listed && candidate.before() == object.definition() &&
                       object.type == tableObject;
            });
            if (table != tables_.end())
                table->listed = false;
            tell(table != tables_.end() ? Loss::What::note : Loss::What::structure, "MSysObjects",
                 object.row.page, "a pasta do objeto \"" + object.name + "\" não existe");
        }
    }

    std::string freeName(const std::string& wanted) {
        std::string name = wanted;
        for (int i = 2; !names_.insert(foldedName(name)).second; ++i)
            name = wanted + "_" + std::to_string(i);
        return name;
    }

    void dropUnknownOrder(RewrittenTable& table) {
        const TableDefinition& definition = table.source->definition();
        for (const RealIndex& index : definition.realIndexes)
            if (const Column* unknown = columnOfUnknownOrder(definition, index)) {
                if (table.before() <= kRelationshipsPage)
                    throw Error(Errc::unsupported, "O catálogo do arquivo usa uma ordem de texto "
                                                   "que este programa não sabe manter.");
                tell(Loss::What::structure, table.name, table.before(),
                     "os índices ficaram de fora: a ordem de texto do campo \"" + unknown->name +
                         "\" não é conhecida");
                return dropIndexes(table);
            }
    }

    void dropIndexes(RewrittenTable& table) {
        TableDefinition bare = table.source->definition();
        bare.realIndexes.clear();
        bare.logicalIndexes.clear();
        table.image = table.image.withoutIndexes();
        table.source = std::make_shared<SourceTable>(source_, table.name, std::move(bare));
    }

    /// Rows that an index refuses: a key that another row has, an empty field that must not be, a
    /// key that can't be made.
    void findApart(RewrittenTable& table) {
        const TableDefinition& definition = table.source->definition();
        std::vector<IndexEntriesSorter> unique(definition.realIndexes.size());
        std::set<std::uint32_t> apart;
        table.source->eachRow(false, [&](const SourceRow& row) {
            std::vector<RowKey> keys;
            for (const RealIndex& index : definition.realIndexes) {
                keys.push_back(rowKey(definition, index, row.parts,
                                      [&](const Column& column, std::span<const std::byte> stored) {
                                          return row.memo(column, stored, definition);
                                      }));
                const RowKey& key = keys.back();
                if (!key.key || !fitsIndex(source_.format(), key.key->size()) ||
                    (index.required && key.anyNull)) {
                    apart.insert(static_cast<std::uint32_t>(packed(row.id)));
                    return;
                }
            }
            for (std::size_t i = 0; i < keys.size(); ++i)
                if (definition.realIndexes[i].unique && !keys[i].allNull)
                    unique[i].add(*keys[i].key, row.id);
        });
        for (IndexEntriesSorter& entries : unique) {
            entries.sort();
            for (std::size_t i = 1; i < entries.size(); ++i)
                if (entries.repeats(i))
                    apart.insert(static_cast<std::uint32_t>(packed(entries.row(i))));
        }
        table.apart.assign(apart.begin(), apart.end());
    }

    [[nodiscard]] bool hasField(const std::string& table, const std::string& field) const {
        if (linked_.contains(foldedName(table)))
            return true;
        const auto found = std::ranges::find_if(tables_, [&](const RewrittenTable& candidate) {
            return foldedName(candidate.name) == foldedName(table);
        });
        return found != tables_.end() &&
               Fields(found->source->definition()).find(field.c_str()) != nullptr;
    }

    /// A relationship with a table, a field or one of its pairs that is lost goes as a whole.
    void dropRelationships() {
        RewrittenTable& table = *std::ranges::find_if(tables_, [](const RewrittenTable& candidate) {
            return candidate.before() == kRelationshipsPage;
        });
        const Fields fields(table.source->definition());
        std::vector<std::pair<RowId, std::string>> rows;
        std::set<std::string> broken;
        std::map<std::string, RelationshipPairs> pairs; // by folded name
        table.source->eachRow(false, [&](const SourceRow& row) {
            const auto text = [&](const char* name) { return fields.text(row.parts, name); };
            rows.emplace_back(row.id, text("szRelationship"));
            if (!hasField(text("szObject"), text("szColumn")) ||
                !hasField(text("szReferencedObject"), text("szReferencedColumn")))
                broken.insert(rows.back().second);
            pairs[foldedName(rows.back().second)].add(
                {foldedName(text("szObject")), foldedName(text("szReferencedObject"))},
                fields.number<std::int32_t>(row.parts, "ccolumn"),
                fields.number<std::int32_t>(row.parts, "icolumn"));
        });
        for (const auto& [row, name] : rows)
            if (!pairs.at(foldedName(name)).whole())
                broken.insert(name);
        for (const auto& [row, name] : rows)
            if (broken.contains(name))
                leaveOut(table, row);
        for (const Object& object : objects_)
            if (object.type == relationshipObject && broken.contains(object.name))
                leaveOut(tables_.front(), object.row);
        for (const std::string& name : broken)
            tell(Loss::What::structure, table.name, table.before(),
                 "o relacionamento \"" + name +
                     "\" não está completo, ou usa uma tabela ou um campo perdido");
    }

    void addTablesBeside() {
        constexpr std::size_t kLongest = 48; // leaves room for what makes the name another
        for (std::size_t i = 0, count = tables_.size(); i < count; ++i) {
            RewrittenTable& table = tables_[i];
            if (table.apart.empty())
                continue;
            std::string stem = table.name.substr(0, kLongest);
            while (!stem.empty() && stem.size() < table.name.size() &&
                   (static_cast<unsigned char>(table.name[stem.size()]) & 0xC0) == 0x80)
                stem.pop_back();
            RewrittenTable beside{.source = table.source,
                                  .image = table.image.withoutIndexes(),
                                  .name = freeName(stem + "_separados"),
                                  .user = true,
                                  .listed = false,
                                  .beside = true,
                                  .apart = table.apart};
            for (const std::uint32_t row : table.apart)
                source_.losses().tell({Loss::What::apart, table.name, unpacked(row).page,
                                       unpacked(row).slot,
                                       "a linha repete a chave de outra ou não tem chave; está na "
                                       "tabela \"" +
                                           beside.name + "\""});
            tables_.push_back(std::move(beside));
        }
    }

    SourceFile& source_;
    std::filesystem::path scratch_;
    std::optional<StandardTables> standard_;
    std::vector<RewrittenTable> tables_; ///< the four system tables first
    std::vector<Object> objects_;
    std::vector<Object> lost_;
    std::set<PageNo> claimed_;
    std::set<std::string> names_;  ///< of all objects, folded
    std::set<std::string> linked_; ///< of tables that are in other files, folded
};

} // namespace

std::vector<RewrittenTable> planSound(SourceFile& source) {
    SourceTable objects(source, "MSysObjects",
                        parseDefinition(source.pager(), kObjectsPage, source.texts()));
    std::vector<RewrittenTable> tables;
    for (const Object& object : readObjects(objects))
        if (object.type == tableObject)
            tables.push_back(
                rewritten(source, object.name, object.user(),
                          parseDefinition(source.pager(), object.definition(), source.texts())));
    return tables;
}

std::vector<RewrittenTable> planDamaged(SourceFile& source, const std::filesystem::path& scratch) {
    return DamagedPlan(source, scratch).run();
}

} // namespace jet
