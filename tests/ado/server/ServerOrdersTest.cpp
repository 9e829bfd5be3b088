// The orders that a list on a server is walked in.
#include "ado/server/ShopWithOthers.h"
#include "jet/TableDefinition.h"

#include <algorithm>
#include <optional>
#include <random>
#include <tuple>

namespace {

using ado::Recordset;
using Strings = std::vector<std::string>;

/// Rows with values missing, and many alike; each is gone on from in both directions.
class ServerOrders : public ShopWithOthers {
protected:
    ServerOrders() {
        makeTable({
            "fichas",
            {{"n", jet::ColumnType::longInteger, 0, true},
              {"a", jet::ColumnType::longInteger},
              {"b", jet::ColumnType::text, 10},
              {"c", jet::ColumnType::boolean}},
            {{"PrimaryKey", {{"n"}}, true}            }
        });
        std::mt19937 random(7);
        std::string values;
        for (int n = 1; n <= kRows; ++n) {
            Row row;
            row.n = n;
            if (random() % 4 != 0)
                row.a = static_cast<int>(random() % 4);
            if (random() % 4 != 0)
                row.b = std::string(1, static_cast<char>('a' + random() % 3));
            row.c = random() % 2 == 0;
            values += (n == 1 ? "(" : ", (") + (row.a ? std::to_string(*row.a) : "null") + ", " +
                      (row.b ? "'" + *row.b + "'" : "null") + (row.c ? ", true)" : ", false)");
            rows.push_back(row);
        }
        elsewhere("insert into fichas (a, b, c) values " + values);
    }
    struct Row {
        int n = 0;
        std::optional<int> a; // the smallest where there is none, as in an optional
        std::optional<std::string> b;
        bool c = false;
    };
    using Less = std::function<bool(const Row&, const Row&)>;
    static constexpr int kRows = 60;
    std::vector<Row> rows;
};
INSTANTIATE_TEST_SUITE_P(, ServerOrders, onServers(), keptName);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ServerOrders);

TEST_P(ServerOrders, AreGoneOnInFromAnyRow) {
    const std::pair<const char*, Less> orders[] = {
        {"a",                      [](const Row& x, const Row& y) { return std::tie(x.a, x.n) < std::tie(y.a, y.n); }},
        {"a desc",
         [](const Row& x,                           const Row& y) { return std::tie(y.a, x.n) < std::tie(x.a, y.n); }},
        {"a, b",                   [](const Row& x,
         const Row& y) { return std::tie(x.a, x.b, x.n) < std::tie(y.a, y.b, y.n); }                                 },
        {"a desc, b",
         [](const Row& x,                           const Row& y) {
             return std::tie(y.a, x.b, x.n) < std::tie(x.a, y.b, y.n);
         }                                                                                  },
        {"b desc, a desc, n desc",
         [](const Row& x,                           const Row& y) {
             return std::tie(y.b, y.a, y.n) < std::tie(x.b, x.a, x.n);
         }                                                                                  },
        {"c, b, b",
         [](const Row& x,                           const Row& y) { // a yes comes first
             return std::tie(y.c, x.b, x.n) < std::tie(x.c, y.b, y.n);
         }                                                                                  },
        {"a, n, b",
         [](const Row& x,                           const Row& y) { return std::tie(x.a, x.n) < std::tie(y.a, y.n); }},
        {"n desc, b",              [](const Row& x, const Row& y) { return y.n < x.n; }                              },
    };
    Recordset list;
    list.Open("fichas", connection);
    for (const auto& [order, less] : orders) {
        SCOPED_TRACE(order);
        std::ranges::sort(rows, less);
        Strings wanted;
        wanted.reserve(rows.size());
        for (const Row& row : rows)
            wanted.push_back(std::to_string(row.n));
        list.setSort(order);
        ASSERT_EQ(walk(list, "n"), wanted);
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            const std::string criterion = "n=" + wanted[i] + " and n>0"; // asked for, not known
            list.FindFirst(criterion);
            list.MoveNext();
            EXPECT_EQ(list.EOF() ? "" : list["n"].text(),
                      i + 1 < wanted.size() ? wanted[i + 1] : "")
                << "after " << wanted[i];
            list.FindFirst(criterion);
            list.MovePrevious();
            EXPECT_EQ(list.BOF() ? "" : list["n"].text(), i > 0 ? wanted[i - 1] : "")
                << "before " << wanted[i];
        }
    }
}

TEST_P(ServerOrders, FromARowWithoutAValueASearchGoesOn) {
    Recordset list;
    list.Open("fichas", connection);
    for (const char* order : {"n, b", "n desc, b", "b, n", "b desc, n"}) {
        list.setSort(order);
        Strings wanted;
        for (const std::string& n : walk(list, "n"))
            if (std::ranges::any_of(
                    rows, [&](const Row& row) { return std::to_string(row.n) == n && !row.a; }))
                wanted.push_back(n);
        Strings found;
        list.MoveFirst();
        for (list.Find("a is null"); !list.EOF(); list.Find("a is null")) {
            found.push_back(list["n"].text());
            list.MoveNext();
            if (list.EOF())
                break;
        }
        EXPECT_EQ(found, wanted) << order;
    }
}

} // namespace
