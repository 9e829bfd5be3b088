#include "jet/CheckLongValues.h"

#include "jet/LongValues.h"

namespace jet {

LongValueCheck::LongValueCheck(const CheckContext& context, PageLedger::Owner owner,
                               std::vector<PageNo> pages)
    : context_(context), owner_(owner), pages_(std::move(pages)) {}

std::optional<Bytes> LongValueCheck::follow(std::span<const std::byte> stored, RowId row) {
    using Kind = LongValueDefinition::Kind;
    const auto fail = [&](PageNo page, const char* what) {
        context_.findings.error(page, context_.ledger.name(owner_), what, "da " + placeOf(row));
        return std::nullopt;
    };
    LongValueDefinition value{};
    try {
        value = LongValueDefinition::parse(stored, row.page);
    } catch (const Error&) {
        return fail(row.page, "a definição de um valor longo está errada");
    }
    if (value.kind == Kind::inRow) {
        const auto content = stored.subspan(LongValueDefinition::kSize, value.length);
        return Bytes(content.begin(), content.end());
    }

    Bytes content;
    for (RowId at = value.first; content.size() < value.length;) {
        if (packed(at) == 0)
            return fail(row.page, "um valor longo termina antes do seu tamanho");
        if (!context_.ledger.has(owner_, at.page))
            return fail(at.page, "um valor longo usa uma página que não é da sua coluna");
        const PageRef page = context_.pager.read(at.page);
        std::span<const std::byte> part;
        try {
            const DataPage holder(context_.pager.format(), page.bytes(), at.page);
            const Slot slot = holder.slot(at.slot);
            if (slot.kind == SlotKind::deleted || holder.owner() != kLongValueOwner)
                return fail(at.page, "um valor longo usa um lugar excluído");
            part = slot.bytes;
        } catch (const Error&) {
            return fail(at.page, "um valor longo usa um lugar que não existe");
        }
        if (used_[at.page].test(at.slot))
            return fail(at.page, "uma parte de valor longo é usada duas vezes");
        used_[at.page].set(at.slot);
        RowId next{};
        if (value.kind == Kind::chain) {
            if (part.size() < 4)
                return fail(at.page, "uma parte de valor longo é curta demais");
            next = unpacked(load<std::uint32_t>(part.data()));
            part = part.subspan(4);
        }
        content.insert(content.end(), part.begin(), part.end());
        at = next;
    }
    if (content.size() > value.length)
        context_.findings.warning(row.page, context_.ledger.name(owner_),
                                  "um valor longo tem bytes de sobra", "da " + placeOf(row));
    content.resize(value.length);
    return content;
}

void LongValueCheck::finish() {
    std::vector<Slot> slots;
    for (const PageNo page : pages_) {
        const PageRef ref = context_.pager.read(page);
        if (!checkDataPage(context_.pager.format(), ref, kLongValueOwner,
                           context_.ledger.name(owner_), context_.findings, slots))
            continue;
        const auto used = used_.find(page);
        for (std::size_t i = 0; i < slots.size() && i <= kMaxSlots; ++i)
            if (slots[i].kind != SlotKind::deleted &&
                (used == used_.end() || !used->second.test(i)))
                context_.findings.warning(page, context_.ledger.name(owner_),
                                          "nenhuma linha usa uma parte de valor longo",
                                          "linha " + std::to_string(i));
    }
}

} // namespace jet
