#include "jet/check/CheckLongValues.h"

namespace jet {

LongValueCheck::LongValueCheck(const CheckContext& context, PageLedger::Owner owner,
                               std::vector<PageNo> pages)
    : context_(context), owner_(owner), pages_(std::move(pages)) {}

std::optional<Bytes> LongValueCheck::follow(std::span<const std::byte> stored, RowId row) {
    auto outcome = walk_.follow(context_.pager, stored, row,
                                [this](PageNo page) { return context_.ledger.has(owner_, page); });
    const std::string& where = context_.ledger.name(owner_);
    if (outcome.problem != nullptr)
        context_.findings.error(outcome.page, where, outcome.problem, "da " + placeOf(row));
    if (outcome.surplus)
        context_.findings.warning(row.page, where, "um valor longo tem bytes de sobra",
                                  "da " + placeOf(row));
    return std::move(outcome.content);
}

void LongValueCheck::finish() {
    std::vector<Slot> slots;
    for (const PageNo page : pages_) {
        const PageRef ref = context_.pager.read(page);
        if (!checkDataPage(context_.pager.format(), ref, kLongValueOwner,
                           context_.ledger.name(owner_), context_.findings, slots))
            continue;
        for (std::size_t i = 0; i < slots.size() && i <= kMaxSlots; ++i)
            if (slots[i].kind != SlotKind::deleted &&
                !walk_.uses({page, static_cast<std::uint16_t>(i)}))
                context_.findings.warning(page, context_.ledger.name(owner_),
                                          "nenhuma linha usa uma parte de valor longo",
                                          "linha " + std::to_string(i));
    }
}

} // namespace jet
