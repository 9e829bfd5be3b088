#include "jet/copy/SourceTable.h"

#include "jet/page/DataPage.h"
#include "jet/page/UsageMap.h"
#include "jet/row/RowEncoder.h"
#include "jet/row/SystemTables.h"
#include "jet/rule/Properties.h"

#include <algorithm>
#include <iterator>

namespace jet {

namespace {

constexpr const char* kUnreadable = "a página não pode ser lida";

} // namespace

Bytes SourceRow::memo(const Column& column, std::span<const std::byte> stored,
                      const TableDefinition& table) const {
    for (const Content& content : contents)
        if (table.columns[content.column].number == column.number)
            return content.bytes;
    return {stored.begin() + LongValueDefinition::kSize, stored.end()};
}

SourceTable::SourceTable(SourceFile& file, std::string name, TableDefinition definition)
    : file_(file), name_(std::move(name)), definition_(std::move(definition)),
      parts_(file.format(), definition_) {
    findPages();
}

void SourceTable::tell(Loss::What what, PageNo page, std::optional<std::uint16_t> slot,
                       std::string reason) {
    if (tells_)
        file_.losses().tell({what, name_, page, slot, std::move(reason)});
}

/// Of a damaged file both the map and the pages themselves are heard.
void SourceTable::findPages() {
    Pager& pager = file_.pager();
    const UsageMap owned(pager, definition_.ownedMap);
    const std::uint32_t me = number(definition_.page());
    try {
        for (auto page = owned.next(0); page; page = owned.next(number(*page) + 1)) {
            // An owner that is no table's is damage to that field alone.
            const std::uint32_t owner = file_.owner(*page);
            if (!file_.damaged() || owner == me ||
                (owner != 0 && owner != kLongValueOwner &&
                 file_.kind(static_cast<PageNo>(owner)) != PageKind::definition))
                pages_.push_back(*page);
            else
                lost_.push_back(*page);
        }
    } catch (const Error&) {
        if (!file_.damaged())
            throw;
        file_.losses().tell({Loss::What::note,
                             name_,
                             definition_.ownedMap.page,
                             {},
                             "o mapa das páginas da tabela está danificado; as páginas foram "
                             "procuradas uma a uma"});
        pages_.clear();
        lost_.clear();
    }
    if (!file_.damaged())
        return;
    std::vector<PageNo> all;
    std::ranges::set_union(pages_, file_.pagesOf(me), std::back_inserter(all));
    pages_ = std::move(all);
}

void SourceTable::eachRow(bool tells, const Visit& visit,
                          const std::function<void(std::uint64_t)>& step) {
    tells_ = tells;
    visit_ = &visit;
    longValues_.clear();
    moved_.clear();
    targets_.clear();
    for (const PageNo page : lost_)
        tell(Loss::What::page, page, {}, kUnreadable);
    std::uint64_t done = 0;
    for (const PageNo page : pages_) {
        visitPage(page);
        if (step)
            step(++done);
    }
    if (file_.damaged())
        visitOrphans();
}

void SourceTable::visitPage(PageNo page) {
    const auto ref = file_.page(page);
    if (!ref) // unreached: it could be read before; a file larger than what is kept may lose it
        return tell(Loss::What::page, page, {}, kUnreadable);
    std::optional<DataPage> data;
    try {
        data.emplace(file_.format(), ref->bytes(), page);
    } catch (const Error&) {
        return tell(Loss::What::page, page, {}, "a tabela de linhas da página está danificada");
    }
    for (std::size_t i = 0; i < data->slotCount(); ++i) {
        const RowId id{page, static_cast<std::uint16_t>(i)};
        if (i >= kMaxSlots) {
            tell(Loss::What::page, page, {}, "a página diz ter linhas demais");
            break;
        }
        Slot slot;
        try {
            slot = data->slot(i);
        } catch (const Error&) {
            tell(Loss::What::row, page, id.slot, "a linha está fora do seu lugar na página");
            continue;
        }
        switch (slot.kind) {
        case SlotKind::deleted:
            break;
        case SlotKind::relocated:
            moved_.push_back(id);
            break;
        case SlotKind::pointer:
            visitPointer(id, slot.bytes);
            break;
        case SlotKind::row:
            visitRow(id, slot.bytes);
            break;
        }
    }
}

void SourceTable::visitPointer(RowId id, std::span<const std::byte> pointer) {
    const auto lost = [&] {
        tell(Loss::What::row, id.page, id.slot, "a linha mudou para um lugar onde não está");
    };
    if (pointer.size() < kMovedTo.size)
        return lost();
    const RowId target = load(pointer.data(), kMovedTo);
    const auto ref = file_.page(target.page);
    // Of a damaged file two pointers may lead to one row: it is there once.
    if (!ref || ref->kind() != PageKind::data || (file_.damaged() && targets_.contains(target)))
        return lost();
    Slot slot;
    try {
        const DataPage there(file_.format(), ref->bytes(), target.page);
        if (there.owner() != number(definition_.page()))
            return lost();
        slot = there.slot(target.slot);
    } catch (const Error&) {
        return lost();
    }
    if (slot.kind != SlotKind::relocated)
        return lost();
    targets_.insert(target);
    visitRow(id, slot.bytes);
}

/// Rows that had moved, and whose pointer is lost.
void SourceTable::visitOrphans() {
    for (const RowId id : moved_) {
        if (targets_.contains(id))
            continue;
        const auto ref = file_.page(id.page);
        if (!ref) // unreached: it has just been visited
            continue;
        tell(Loss::What::note, id.page, id.slot,
             "nenhum lugar apontava para esta linha; foi aproveitada");
        visitRow(id, DataPage(file_.format(), ref->bytes(), id.page).slot(id.slot).bytes);
    }
}

/// Why a value can't be taken; null if it can. Notes the content of one that lies outside.
const char* SourceTable::flawOf(const Column& column, std::span<const std::byte> stored, RowId id) {
    const auto at = static_cast<std::size_t>(&column - definition_.columns.data());
    std::span<const std::byte> text = stored;
    if (isLongValue(column.type)) {
        LongValueWalk::Outcome outcome;
        try {
            outcome =
                longValues_[column.number].follow(file_.pager(), stored, id, [&](PageNo page) {
                    return number(page) < file_.pager().pageCount();
                });
        } catch (const Error& error) {
            if (!file_.damaged())
                throw;
            outcome = {std::nullopt, "uma página do valor longo não pode ser lida", {}, false};
        }
        if (!outcome.content)
            return outcome.problem;
        const auto kind = LongValueDefinition::parse(stored, id.page).kind;
        text = contents_[at] = std::move(*outcome.content);
        if (column.type == ColumnType::memo && file_.damaged())
            try {
                column.codec.decodeTo(text_, text);
            } catch (const Error&) {
                return "o texto não pode ser lido";
            }
        if (file_.damaged() && definition_.page() == kObjectsPage && column.name == "LvProp")
            try {
                const TextCodec names(file_.format().version, file_.texts().codePage);
                (void)parseProperties(text, names, id.page);
            } catch (const Error&) {
                // With rules that nobody can read no row of that table could be changed.
                return "as propriedades e regras não podem ser lidas";
            }
        if (kind == LongValueDefinition::Kind::inRow)
            contents_.erase(at);
        return nullptr;
    }
    if (!file_.damaged())
        return nullptr;
    if (const std::size_t size = fixedLength(column.type); size != 0 && stored.size() != size)
        return "o valor não tem o tamanho do seu tipo";
    if (column.type == ColumnType::text)
        try {
            column.codec.decodeTo(text_, text);
        } catch (const Error&) {
            return "o texto não pode ser lido";
        }
    return nullptr;
}

void SourceTable::visitRow(RowId id, std::span<const std::byte> bytes) {
    parts_.cut(bytes);
    if (const char* flaw = parts_.flaw())
        return tell(Loss::What::row, id.page, id.slot, flaw);
    contents_.clear();
    std::vector<bool> empty(definition_.columns.size());
    bool whole = true;
    for (std::size_t i = 0; i < definition_.columns.size(); ++i) {
        const Column& column = definition_.columns[i];
        const auto stored = parts_.field(column);
        if (!stored)
            continue;
        if (const char* flaw = flawOf(column, *stored, id)) {
            tell(Loss::What::value, id.page, id.slot,
                 "o campo \"" + column.name + "\" ficou vazio: " + flaw);
            contents_.erase(i);
            empty[i] = true;
            whole = false;
        }
    }
    Bytes rebuilt;
    if (!whole) {
        try {
            rebuilt = withoutColumns(empty);
        } catch (const Error&) {
            return tell(Loss::What::row, id.page, id.slot, "a linha é longa demais");
        }
        bytes = rebuilt;
        parts_.cut(bytes);
    }
    SourceRow row{id, bytes, parts_, {}};
    for (auto& [column, content] : contents_) {
        const auto stored = parts_.field(definition_.columns[column]);
        row.contents.push_back(
            {column, static_cast<std::size_t>(stored->data() - bytes.data()), std::move(content)});
    }
    (*visit_)(row);
}

Bytes SourceTable::withoutColumns(const std::vector<bool>& empty) const {
    StoredRow fields(definition_.columns.size());
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const Column& column = definition_.columns[i];
        if (column.type == ColumnType::boolean) {
            fields[i].present = parts_.bit(column);
        } else if (const auto stored = parts_.field(column); stored && !empty[i]) {
            fields[i].present = true;
            fields[i].bytes.assign(stored->begin(), stored->end());
        }
    }
    return assembleRow(file_.format(), definition_, fields);
}

} // namespace jet
