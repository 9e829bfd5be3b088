#include "ado/file/FetchedRows.h"

namespace ado {

namespace {

/// Rows of a join that meet a criterion.
constexpr std::size_t kMostFound = 2'000'000;

} // namespace

bool JoinRows::erased(std::size_t table, const std::unordered_set<std::int64_t>& ids) {
    bool here = false;
    auto& all = cells();
    for (std::size_t i = table; i < all.size(); i += width()) {
        if (ids.contains(all[i])) {
            all[i] = kErased;
            here = here || i / width() == place();
        }
    }
    return here;
}

bool JoinRows::find(PreparedStatement statement,
                    const std::function<const jet::RowView*()>& /*current*/) {
    using Ids = std::vector<std::int64_t>;
    const auto idsOf = [this](const auto& idOf) {
        Ids ids;
        for (std::size_t i = 0; i < width(); ++i)
            ids.push_back(idOf(i));
        return ids;
    };
    std::vector<Ids> meet;
    statement.all([&] { meet.clear(); },
                  [&] {
                      if (meet.size() == kMostFound) // unreached: so many take a test too long
                          tooMuch();
                      meet.push_back(idsOf(
                          [&](std::size_t i) { return statement.integer(static_cast<int>(i)); }));
                  });
    std::ranges::sort(meet);
    bool there = true;
    while (there &&
           !std::ranges::binary_search(meet, idsOf([&](std::size_t i) { return cell(i); })))
        there = next();
    return there;
}

} // namespace ado
