#include "jet/check/CheckTable.h"

#include "jet/page/DataPage.h"

#include <algorithm>

namespace jet {

TableCheck::TableCheck(const CheckContext& context, std::string name, TableDefinition definition,
                       bool user)
    : context_(context), name_(std::move(name)), where_("tabela \"" + name_ + "\""),
      definition_(std::move(definition)), user_(user), owner_(context.ledger.newOwner(where_)),
      parts_(context.pager.format(), definition_) {
    // All claims come before any row is read: a page that two say is theirs is told once, and its
    // rows are looked at by the first only.
    PageLedger& ledger = context_.ledger;
    pages_ = ledger.claimMap(definition_.ownedMap, owner_).value_or(std::vector<PageNo>());
    ledger.readSubset(definition_.freeMap, owner_);
    for (std::size_t i = 0; i < definition_.realIndexes.size(); ++i) {
        indexOwners_.push_back(ledger.newOwner(where_ + ", índice \"" + indexName(i) + "\""));
        (void)ledger.claimMap(definition_.realIndexes[i].map, indexOwners_[i]);
    }
    for (const LongValueMaps& maps : definition_.longValues) {
        std::string column = std::to_string(maps.columnNumber);
        for (const Column& candidate : definition_.columns)
            if (candidate.number == maps.columnNumber)
                column = candidate.name;
        const auto owner = ledger.newOwner(where_ + ", coluna \"" + column + "\"");
        longValues_.try_emplace(maps.columnNumber, context_, owner,
                                ledger.claimMap(maps.owned, owner).value_or(std::vector<PageNo>()));
        if (maps.free)
            ledger.readSubset(*maps.free, owner);
    }
}

std::string TableCheck::indexName(std::size_t index) const {
    for (const LogicalIndex& logical : definition_.logicalIndexes)
        if (logical.realIndex == index)
            return logical.name;
    return std::to_string(index);
}

void TableCheck::checkRows() {
    std::uint64_t done = 0;
    for (const PageNo page : pages_) {
        context_.goOn(where_, done++, pages_.size());
        checkPage(page);
    }
    compareMoved();
    checkCounters();
    for (auto& [column, values] : longValues_)
        values.finish();
}

void TableCheck::checkPage(PageNo page) {
    const PageRef ref = context_.pager.read(page);
    std::vector<Slot> slots;
    if (!checkDataPage(context_.pager.format(), ref, number(definition_.page()), where_,
                       context_.findings, slots))
        return;
    for (std::size_t i = 0; i < std::min(slots.size(), kMaxSlots); ++i) {
        const RowId id{page, static_cast<std::uint16_t>(i)};
        const auto key = static_cast<PackedRow>(packed(id));
        switch (slots[i].kind) {
        case SlotKind::deleted:
            break;
        case SlotKind::relocated: // a row where its pointer stands, not here
            moved_.push_back(key);
            break;
        case SlotKind::row:
            rows_.push_back(key);
            checkRow(slots[i].bytes, id);
            break;
        case SlotKind::pointer: {
            rows_.push_back(key);
            PageRef other;
            if (const auto row = target(slots[i].bytes, other)) {
                targets_.push_back(
                    static_cast<PackedRow>(packed(load(slots[i].bytes.data(), kMovedTo))));
                checkRow(*row, id);
            } else {
                error(page, "uma linha mudou para um lugar onde não está",
                      "linha " + std::to_string(i));
                damaged_.push_back(key);
            }
            break;
        }
        }
    }
}

std::optional<std::span<const std::byte>> TableCheck::target(std::span<const std::byte> pointer,
                                                             PageRef& page) {
    if (pointer.size() < kMovedTo.size)
        return std::nullopt;
    const RowId id = load(pointer.data(), kMovedTo);
    // In another's page may lie a row as good as ours: whose page it is tells.
    if (!context_.ledger.has(owner_, id.page))
        return std::nullopt;
    page = context_.pager.read(id.page);
    try {
        const DataPage holder(context_.pager.format(), page.bytes(), id.page);
        const Slot slot = holder.slot(id.slot);
        if (slot.kind != SlotKind::relocated || holder.owner() != number(definition_.page()))
            return std::nullopt;
        return slot.bytes;
    } catch (const Error&) {
        return std::nullopt;
    }
}

void TableCheck::checkRow(std::span<const std::byte> row, RowId id) {
    parts_.cut(row);
    if (const char* flaw = parts_.flaw()) {
        error(id.page, flaw, "linha " + std::to_string(id.slot));
        damaged_.push_back(static_cast<PackedRow>(packed(id)));
        return;
    }
    if (parts_.hasStrayBits())
        context_.findings.warning(id.page, where_, "a máscara de nulos da linha tem bits de sobra",
                                  "linha " + std::to_string(id.slot));
    for (const Column& column : definition_.columns)
        if (const auto stored = parts_.field(column))
            checkValue(column, *stored, id);
}

void TableCheck::checkValue(const Column& column, std::span<const std::byte> stored, RowId id) {
    const auto detail = [&] {
        return "linha " + std::to_string(id.slot) + ", coluna \"" + column.name + "\"";
    };
    if (const std::size_t size = fixedLength(column.type); size != 0 && stored.size() != size)
        return error(id.page, "um valor não tem o tamanho do seu tipo", detail());
    switch (column.type) {
    case ColumnType::longInteger:
        if (column.autonumber)
            largestNumber_ =
                std::max<std::int64_t>(largestNumber_, load<std::int32_t>(stored.data()));
        break;
    case ColumnType::date:
        if (!Date{load<double>(stored.data())}.inRange())
            context_.findings.warning(id.page, where_, "uma data está fora do calendário",
                                      detail());
        break;
    case ColumnType::binary:
        if (stored.size() > column.length)
            context_.findings.warning(id.page, where_, "um valor é mais longo do que a sua coluna",
                                      detail());
        break;
    case ColumnType::text:
        checkText(column, stored, id);
        break;
    case ColumnType::memo:
    case ColumnType::ole:
        if (const auto values = longValues_.find(column.number); values == longValues_.end())
            error(id.page, "um valor longo está numa coluna sem mapas", detail());
        else if (const auto content = values->second.follow(stored, id);
                 content && column.type == ColumnType::memo)
            checkText(column, *content, id);
        break;
    default:
        break;
    }
}

void TableCheck::checkText(const Column& column, std::span<const std::byte> text, RowId id) {
    const auto detail = [&] {
        return "linha " + std::to_string(id.slot) + ", coluna \"" + column.name + "\"";
    };
    try {
        column.codec.decodeTo(text_, text);
    } catch (const Error&) {
        return error(id.page, "um texto não pode ser lido", detail());
    }
    // Only what may be too long is worth counting: a character takes a byte at least.
    if (column.type == ColumnType::text && text_.size() > column.maxCharacters() &&
        column.codec.characters(text_) > column.maxCharacters())
        context_.findings.warning(id.page, where_, "um valor é mais longo do que a sua coluna",
                                  detail());
}

void TableCheck::compareMoved() {
    std::sort(moved_.begin(), moved_.end());
    std::sort(targets_.begin(), targets_.end());
    for (std::size_t i = 1; i < targets_.size(); ++i)
        if (targets_[i] == targets_[i - 1])
            error(unpacked(targets_[i]).page, "duas linhas mudaram para o mesmo lugar",
                  placeOf(unpacked(targets_[i])));
    for (const PackedRow row : moved_)
        if (!std::binary_search(targets_.begin(), targets_.end(), row))
            context_.findings.warning(unpacked(row).page, where_,
                                      "nenhuma linha mudou para um lugar que está ocupado",
                                      placeOf(unpacked(row)));
}

void TableCheck::checkCounters() {
    const PageRef page = context_.pager.read(definition_.page());
    const Format& format = context_.pager.format();
    const std::uint32_t said = page.view().load(format.definition.rows);
    if (said != rows_.size()) {
        const std::string detail =
            "diz " + std::to_string(said) + ", são " + std::to_string(rows_.size());
        const char* what = "o número de registros está errado";
        if (user_)
            error(definition_.page(), what, detail);
        else
            context_.findings.warning(definition_.page(), where_, what, detail);
    }
    const std::int32_t last = page.view().load(format.definition.lastNumber);
    if (largestNumber_ > last)
        error(definition_.page(), "a numeração está atrasada",
              "está em " + std::to_string(last) + ", o maior número é " +
                  std::to_string(largestNumber_));
}

} // namespace jet
