#pragma once

#include "ado/server/ServerCatalog.h"
#include "ado/server/ServerQuery.h"
#include "ado/server/ServerWire.h"

#include <optional>
#include <vector>

namespace ado {

/// A row that goes or changes along with another, by the server's foreign keys: as it was, and as
/// it is then; nothing for one that goes.
struct FollowedRow {
    const ServerTable* table;
    ServerRow before;
    std::optional<ServerRow> after;
};

/// The tables whose rows may go along with one of `table` that is erased, or change with it.
[[nodiscard]] std::vector<const ServerTable*> cascadeTargets(const ServerCatalog& catalog,
                                                             const ServerTable& table);

/// What goes or changes along with `row`, inside its transaction: of one that is to be erased it is
/// asked before, of one that has been changed afterwards. Each stands behind what it follows from.
/// Costs a question for each foreign key on the way, none where there is none.
///
/// A row that refers to itself changes once more then, and so `row` does.
///
/// What takes its default, or is emptied as its parent's key changes, isn't found: no foreign key
/// that comes from a file does, and of another checkServer() tells.
[[nodiscard]] std::vector<FollowedRow> followingRows(ServerWire& wire, const ServerCatalog& catalog,
                                                     FollowedRow& row);

} // namespace ado
