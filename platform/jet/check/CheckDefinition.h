#pragma once

#include "jet/TableDefinition.h"
#include "jet/check/CheckPages.h"

#include <stop_token>

namespace jet {

/// What every part of a check works with.
struct CheckContext {
    Pager& pager;
    TextSettings texts;
    Findings& findings;
    PageLedger& ledger;
    const std::stop_token& stop;

    /// Called on every page and every index entry.
    /// @throws Error{cancelled}.
    void goOn() const {
        if (stop.stop_requested())
            throw Error(Errc::cancelled, "A verificação foi interrompida.");
    }
};

/// The definition that starts on `first`, its pages claimed for the table `where` names; nothing if
/// it doesn't parse. Tells what its readers pass over: constants, lengths, names, the lists that
/// must agree.
std::optional<TableDefinition> checkDefinition(const CheckContext& context, PageNo first,
                                               const std::string& where);

} // namespace jet
