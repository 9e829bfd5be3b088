#pragma once

#include "jet/Progress.h"
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
    const Progress& progress;

    /// Called on every page and every index entry.
    /// @throws Error{cancelled}.
    void goOn() const {
        if (stop.stop_requested())
            throw Error(Errc::cancelled, "A verificação foi interrompida.");
    }
    /// The same, where it is known how far the check of something has come.
    void goOn(const std::string& what, std::uint64_t done, std::uint64_t all) const {
        constexpr std::uint64_t kStep = 256; // nobody sees a smaller one of many
        goOn();
        if (progress && done % kStep == 0)
            progress(what, done, all);
    }
};

/// The definition that starts on `first`, its pages claimed for the table `where` names; nothing if
/// it doesn't parse. Tells what its readers pass over: constants, lengths, names, the lists that
/// must agree.
std::optional<TableDefinition> checkDefinition(const CheckContext& context, PageNo first,
                                               const std::string& where);

} // namespace jet
