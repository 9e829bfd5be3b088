#include "jet/row/LongValueWalk.h"

#include "jet/page/DataPage.h"

namespace jet {

LongValueWalk::Outcome LongValueWalk::follow(Pager& pager, std::span<const std::byte> stored,
                                             RowId row, const std::function<bool(PageNo)>& mayUse) {
    using Kind = LongValueDefinition::Kind;
    const auto fail = [](PageNo page, const char* problem) {
        return Outcome{std::nullopt, problem, page, false};
    };
    LongValueDefinition value{};
    try {
        value = LongValueDefinition::parse(stored, row.page);
    } catch (const Error&) {
        return fail(row.page, "a definição de um valor longo está errada");
    }
    if (value.kind == Kind::inRow) {
        const auto content = stored.subspan(LongValueDefinition::kSize, value.length);
        return {Bytes(content.begin(), content.end()), nullptr, {}, false};
    }

    Bytes content;
    for (RowId at = value.first; content.size() < value.length;) {
        if (at == RowId{})
            return fail(row.page, "um valor longo termina antes do seu tamanho");
        if (!mayUse(at.page))
            return fail(at.page, "um valor longo usa uma página que não é da sua coluna");
        const PageRef page = pager.read(at.page);
        std::span<const std::byte> part;
        try {
            const DataPage holder(pager.format(), page.bytes(), at.page);
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
            if (part.size() < LongValueDefinition::kNext.size)
                return fail(at.page, "uma parte de valor longo é curta demais");
            next = load(part.data(), LongValueDefinition::kNext);
            part = part.subspan(LongValueDefinition::kNext.size);
        }
        content.insert(content.end(), part.begin(), part.end());
        at = next;
    }
    const bool surplus = content.size() > value.length;
    content.resize(value.length);
    return {std::move(content), nullptr, {}, surplus};
}

bool LongValueWalk::uses(RowId slot) const noexcept {
    const auto used = used_.find(slot.page);
    return used != used_.end() && slot.slot < used->second.size() && used->second.test(slot.slot);
}

} // namespace jet
