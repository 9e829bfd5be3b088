#include "jet/copy/Rewriter.h"

#include "jet/Names.h"
#include "jet/index/RowKey.h"
#include "jet/row/SystemTables.h"

#include <algorithm>

namespace jet {

namespace {

constexpr std::size_t kOpenLongValuePages = 8;

/// The fields that hold the number of a definition page, by table. Others number their objects
/// differently.
struct ObjectField {
    const char* table;
    const char* column;
};
constexpr ObjectField kObjectFields[] = {
    {"MSysObjects", "Id"      },
    {"MSysACEs",    "ObjectId"},
    {"MSysQueries", "ObjectId"}
};

bool contains(const std::vector<std::uint32_t>& rows, RowId id) {
    return std::ranges::binary_search(rows, static_cast<std::uint32_t>(packed(id)));
}

} // namespace

bool holdsDefinitionPage(const std::string& table, const std::string& column) {
    return std::ranges::any_of(kObjectFields, [&](const ObjectField& field) {
        return foldedName(field.table) == foldedName(table) &&
               foldedName(field.column) == foldedName(column);
    });
}

std::uint32_t PageNumbers::translated(std::uint32_t object) const {
    if (object > kObjectPageMask)
        return object;
    if (const auto known = now_.find(object); known != now_.end())
        return known->second;
    return taken_.contains(object) ? kObjectPageMask - object : object;
}

/// The copying of one table.
class Rewriter::Copy {
public:
    Copy(Rewriter& owner, RewrittenTable& table)
        : owner_(owner), table_(table), definition_(table.source->definition()),
          rows_(owner.target_, number(table.page()), 1) {
        for (std::size_t i = 0; i < definition_.longValues.size(); ++i)
            fillers_.try_emplace(definition_.longValues[i].columnNumber, owner.target_,
                                 kLongValueOwner, kOpenLongValuePages);
        for (const Column& column : definition_.columns)
            if (!table.user && holdsDefinitionPage(table.name, column.name))
                object_ = &column;
    }

    void run() {
        copyRows();
        placeMaps();
        buildIndexes();
        writeDefinition();
    }

private:
    void copyRows() {
        const std::uint64_t pages = table_.source->pages().size();
        table_.source->eachRow(
            !table_.beside, [this](const SourceRow& row) { copy(row); },
            [&](std::uint64_t done) {
                if (owner_.progress_)
                    owner_.progress_(table_.name, done, pages);
            });
        rows_.flush();
        for (auto& [column, filler] : fillers_)
            filler.flush();
    }

    void copy(const SourceRow& row) {
        if (contains(table_.apart, row.id) != table_.beside || contains(table_.leftOut, row.id))
            return;
        bytes_.assign(row.bytes.begin(), row.bytes.end());
        for (const SourceRow::Content& content : row.contents) {
            const std::uint16_t column = definition_.columns[content.column].number;
            const auto filler = fillers_.find(column);
            if (filler == fillers_.end()) // unreached: check() tells of it, salvage mends it
                corrupt(row.id.page, "um valor longo está numa coluna sem mapas");
            const Bytes stored = writeLongValue(
                owner_.target_.format(), content.bytes, false,
                [&](std::span<const std::byte> part) { return filler->second.add(part); });
            std::ranges::copy(stored, bytes_.begin() + static_cast<std::ptrdiff_t>(content.at));
        }
        if (object_ != nullptr)
            translate(row);
        for (const Column& column : definition_.columns)
            if (column.autonumber)
                if (const auto stored = row.parts.field(column))
                    largest_ = std::max(largest_, load<std::int32_t>(stored->data()));
        (void)rows_.add(bytes_);
        ++table_.rows;
    }

    void translate(const SourceRow& row) {
        const auto stored = row.parts.field(*object_);
        if (!stored || stored->size() != 4)
            return;
        store<std::uint32_t>(bytes_.data() + (stored->data() - row.bytes.data()),
                             owner_.numbers_.translated(load<std::uint32_t>(stored->data())));
    }

    void placeMaps() {
        NewFile& file = owner_.target_;
        const RowId owned = file.addMap(rows_.pages());
        table_.image.setMaps(owned, file.addMap(rows_.roomy()));
        for (std::size_t i = 0; i < definition_.longValues.size(); ++i) {
            const PageFiller& filler = fillers_.at(definition_.longValues[i].columnNumber);
            const RowId values = file.addMap(filler.pages());
            table_.image.setLongValueMaps(i, values, file.addMap(filler.roomy()));
        }
    }

    /// One index after the other, each from the rows as they are in the new file.
    void buildIndexes() {
        if (table_.beside || definition_.realIndexes.empty())
            return;
        Pager written(owner_.target_.reopened(), owner_.target_.format(), false);
        RowParts parts(owner_.target_.format(), definition_);
        for (std::size_t i = 0; i < definition_.realIndexes.size(); ++i) {
            const RealIndex& index = definition_.realIndexes[i];
            if (const Column* unknown = columnOfUnknownOrder(definition_, index))
                throw Error(Errc::unsupported,
                            "A tabela \"" + table_.name + "\" não pode ser copiada: o campo \"" +
                                unknown->name + "\" tem índice e usa a ordem de texto " +
                                std::to_string(unknown->order.lcid) +
                                ", que este programa não sabe manter.");
            IndexEntriesSorter entries;
            for (const PageNo page : rows_.pages())
                addEntries(written, page, index, parts, entries);
            entries.sort();
            if (index.unique)
                requireUnique(entries, index);
            const BuiltIndex built = buildIndex(owner_.target_, table_.page(), entries);
            table_.image.setIndex(i, owner_.target_.addMap(built.pages), built.root,
                                  static_cast<std::uint32_t>(entries.size()), built.distinctKeys);
        }
    }

    void addEntries(Pager& written, PageNo page, const RealIndex& index, RowParts& parts,
                    IndexEntriesSorter& entries) const {
        const PageRef ref = written.read(page);
        const DataPage data(written.format(), ref.bytes(), page);
        for (std::size_t slot = 0; slot < data.slotCount(); ++slot) {
            parts.cut(data.slot(slot).bytes);
            const RowKey found = rowKey(definition_, index, parts,
                                        [&](const Column&, std::span<const std::byte> stored) {
                                            return readLongValue(written, stored, page);
                                        });
            if (index.ignoreNulls && found.allNull)
                continue;
            if (!found.key) // unreached: check() has told of it, or it was set apart
                throw Error(Errc::corrupt, "A tabela \"" + table_.name +
                                               "\" tem um valor que não cabe no seu índice.");
            entries.add(*found.key, {page, static_cast<std::uint16_t>(slot)});
        }
    }

    void requireUnique(const IndexEntriesSorter& entries, const RealIndex& index) const {
        for (std::size_t i = 1; i < entries.size(); ++i)
            if (entries.repeats(i) &&
                !isAllNull(entries.key(i), index.columns.size())) // unreached: as above
                throw Error(Errc::corrupt, "A tabela \"" + table_.name +
                                               "\" tem dois registros com a mesma chave única.");
    }

    void writeDefinition() {
        table_.image.setRowCount(static_cast<std::uint32_t>(table_.rows));
        table_.image.setLastNumber(std::max(table_.image.lastNumber(), largest_));
        for (std::size_t i = 0; i < table_.pages.size(); ++i)
            owner_.target_.write(
                table_.pages[i],
                definitionPage(owner_.target_.format(), table_.image.bytes(), i,
                               i + 1 < table_.pages.size() ? table_.pages[i + 1] : PageNo{}));
    }

    Rewriter& owner_;
    RewrittenTable& table_;
    const TableDefinition& definition_;
    const Column* object_ = nullptr;
    PageFiller rows_;
    std::map<std::uint16_t, PageFiller> fillers_; ///< by column number
    Bytes bytes_;
    std::int32_t largest_ = 0;
};

Rewriter::Rewriter(SourceFile& source, NewFile& target, std::vector<RewrittenTable>& tables,
                   Progress progress)
    : source_(source), target_(target), tables_(tables), progress_(std::move(progress)) {}

void Rewriter::takePages() {
    for (RewrittenTable& table : tables_) {
        // Every program looks for the system's tables where they always are.
        const bool core = number(table.before()) < kFirstUserDefinition && !table.beside;
        const std::size_t count = definitionPageCount(target_.format(), table.image.bytes().size());
        for (std::size_t i = 0; i < count; ++i)
            table.pages.push_back(core && i == 0 ? table.before() : target_.take());
        if (table.beside) {
            numbers_.add(table.page());
        } else {
            numbers_.add(table.before(), table.page());
            places_.emplace(table.before(), static_cast<std::size_t>(&table - tables_.data()));
        }
    }
}

const RewrittenTable* Rewriter::otherEnd(const RewrittenTable& table,
                                         const DefinitionImage::End& end) const {
    const auto place = places_.find(end.otherTable);
    if (place == places_.end())
        return nullptr;
    const TableDefinition& definition = table.source->definition();
    const RewrittenTable* other = &tables_[place->second];
    const bool there = std::ranges::any_of(
        other->source->definition().logicalIndexes, [&](const LogicalIndex& index) {
            return arePartners(definition, definition.logicalIndexes[end.logical], index);
        });
    return there ? other : nullptr;
}

void Rewriter::linkRelationships(RewrittenTable& table) const {
    for (const DefinitionImage::End& end : table.image.relationshipEnds()) {
        if (const RewrittenTable* other = otherEnd(table, end)) {
            table.image.setOtherTable(end.logical, other->page());
            continue;
        }
        source_.losses().tell({Loss::What::structure,
                               table.name,
                               table.before(),
                               {},
                               "o relacionamento \"" +
                                   table.source->definition().logicalIndexes[end.logical].name +
                                   "\" ficou sem a outra tabela e foi desfeito"});
        table.image.dissolve(end.logical);
    }
}

void Rewriter::run() {
    takePages();
    for (RewrittenTable& table : tables_)
        linkRelationships(table);
    for (RewrittenTable& table : tables_)
        Copy(*this, table).run();
}

} // namespace jet
