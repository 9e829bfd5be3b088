// What a server sends as rows, and what only a broken or hostile one does.
#include "ado/migrate/BinaryRows.h"

#include "ado/server/ServerValue.h"
#include "jet/Error.h"

#include <gmock/gmock.h>

namespace {

using jet::ColumnType;
using testing::AllOf;
using testing::HasSubstr;

/// A number, its most significant byte first.
std::string sent(std::int64_t number, int bytes) {
    std::string text;
    while (bytes-- > 0)
        text += static_cast<char>(static_cast<std::uint64_t>(number) >> (8 * bytes));
    return text;
}
std::string head(std::uint32_t more = 0) {
    return std::string("PGCOPY\n\377\r\n\0", 11) + sent(0, 4) + sent(more, 4);
}
std::string field(const std::string& bytes) {
    return sent(static_cast<std::int64_t>(bytes.size()), 4) + bytes;
}
/// A decimal number: places of four digits, the weight of the first, a sign.
std::string decimal(std::initializer_list<int> places, int weight, int sign = 0) {
    std::string text =
        sent(static_cast<std::int64_t>(places.size()), 2) + sent(weight, 2) + sent(sign, 2);
    text += sent(4, 2);
    for (const int place : places)
        text += sent(place, 2);
    return text;
}

const std::string kEnd = sent(-1, 2);

class BinaryRows : public testing::Test {
protected:
    std::vector<jet::Row> rowsIn(const std::string& bytes, std::size_t piece = 1 << 20) {
        std::vector<jet::Row> rows;
        ado::BinaryRows reader(table_, [&](jet::Row& row) { rows.push_back(row); });
        for (std::size_t at = 0; at < bytes.size(); at += piece)
            reader.add(std::string_view(bytes).substr(at, piece));
        return rows;
    }
    std::string refusal(const std::string& bytes) {
        try {
            ADD_FAILURE() << rowsIn(bytes).size() << " rows";
        } catch (const jet::Error& error) {
            EXPECT_EQ(error.code(), jet::Errc::corrupt);
            return error.what();
        }
        return "";
    }
    /// What is said of that value of a second row of one column.
    std::string refusal(ColumnType type, const std::string& bytes) {
        table_ = {"t", {{"c", type}}, {}};
        return refusal(head() + sent(1, 2) + sent(-1, 4) + sent(1, 2) + field(bytes) + kEnd);
    }
    jet::TableSpec table_{
        "t", {{"n", ColumnType::longInteger}, {"texto", ColumnType::text, 50}},
         {                              }
    };
};

TEST_F(BinaryRows, AreTheSameHoweverTheyComeInPieces) {
    const std::string bytes = head(3) + "xyz" + sent(2, 2) + field(sent(7, 4)) + field("sete") +
                              sent(2, 2) + sent(-1, 4) + field("") + kEnd;
    const std::vector<jet::Row> rows{
        {std::int64_t{7}, std::string("sete")},
        {{},              std::string()      }
    };
    for (const std::size_t piece : {std::size_t{1}, std::size_t{5}, bytes.size()})
        EXPECT_TRUE(rowsIn(bytes, piece) == rows) << piece;
}

TEST_F(BinaryRows, OfAnotherFormAreRefused) {
    for (const std::string& bytes :
         {std::string(40, 'x'), head() + sent(3, 2), head() + sent(-2, 2)})
        EXPECT_THAT(refusal(bytes), HasSubstr("não se deixam ler"));
}

TEST_F(BinaryRows, AValueThatAFileHasNoPlaceForIsToldByTableRowAndField) {
    const std::pair<ColumnType, std::string> values[] = {
        {ColumnType::longInteger,              sent(1,                 2)         }, // too short
        {ColumnType::currency,                 sent(1,                 2)         },
        {ColumnType::currency,                 decimal({},             0,           0xC000)}, // NaN
        {ColumnType::currency,                                    sent(-1,                                       2) + sent(0,        6)},
        {ColumnType::currency,                                  decimal({1},                                                        0).substr(0,                                         8)},
        {ColumnType::currency,                         decimal({999, 9999, 9999, 9999},3)},
        {ColumnType::numeric,decimal({1, 0, 0, 0, 0, 0, 0, 0, 0},            12)                                                              },
        {ColumnType::guid,                     std::string(15,                             'x')},
        {ColumnType::date,  sent(INT64_MAX,8)                         }, // for ever
        {ColumnType::date,                     sent(INT64_MIN,                                                  8)                                   },
    };
    for (const auto& [type, bytes] : values)
        EXPECT_THAT(refusal(type, bytes), AllOf(HasSubstr("tabela \"t\", registro 2"),
                                                HasSubstr("campo \"c\" tem no servidor")))
            << static_cast<int>(type);
}

} // namespace
