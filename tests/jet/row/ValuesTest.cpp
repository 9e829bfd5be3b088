// What a column takes, and what it gives back for it.
#include "jet/Database.h"
#include "jet/People.h"
#include "jet/Sentences.h"
#include "jet/row/RowEncoder.h"
#include "support/Versions.h"

#include <gmock/gmock.h>

#include <limits>

using namespace jet;
using namespace std::string_literals;
using testing::HasSubstr;

namespace {

class Values : public RuleFile {
protected:
    Values() {
        TableSpec spec{
            "tudo",
            {{"sim", ColumnType::boolean},
              {"byte", ColumnType::byte},
              {"curto", ColumnType::integer},
              {"longo", ColumnType::longInteger},
              {"valor", ColumnType::currency},
              {"simples", ColumnType::single},
              {"duplo", ColumnType::real},
              {"data", ColumnType::date},
              {"nome", ColumnType::text, 5},
              {"obs", ColumnType::memo},
              {"cru", ColumnType::binary, 4},
              {"objeto", ColumnType::ole},
              {"guid", ColumnType::guid}},
            {}
        };
        if (GetParam() == Version::jet4)
            spec.columns.push_back({"decimal", ColumnType::numeric, 0, false, 18, 2});
        database_->createTable(spec);
    }
    [[nodiscard]] Table& all() { return table("tudo"); }
    [[nodiscard]] std::size_t at(const char* column) { return all().findColumn(column).value(); }
    RowId with(const char* column, const Value& value) {
        return all().insert(std::vector<Assignment>{
            {at(column), value}
        });
    }
};

INSTANTIATE_TEST_SUITE_P(, Values, bothVersions(), versionName);

const Bytes kThree(3, std::byte{7});
const Guid kGuid{
    {std::byte{1}, std::byte{2}}
};

TEST_P(Values, ComeBackInTheTypeOfTheColumn) {
    const struct {
        const char* column;
        Value given, stored;
    } cases[] = {
        {"sim",          true,                    true                            },
        {"sim",          whole(5),                true                            },
        {"sim",          whole(0),                false                           },
        {"sim",          Value{},                 false                           },
        {"byte",         whole(255),              whole(255)                      },
        {"byte",         whole(0),                whole(0)                        },
        {"curto",        whole(-32768),           whole(-32768)                   },
        {"curto",        true,                    whole(-1)                       },
        {"longo",        false,                   whole(0)                        },
        {"longo",        whole(2147483647),       whole(2147483647)               },
        {"valor",        Currency{-1},            Currency{-1}                    },
        {"valor",        whole(922337203685477),  Currency{9223372036854770000}   },
        {"valor",        whole(-922337203685477), Currency{-9223372036854770000}  },
        {"simples",      0.5,                     0.5                             },
        {"simples",      whole(-3),               -3.0                            },
        {"duplo",        1e300,                   1e300                           },
        {"duplo",        whole(7),                7.0                             },
        {"data",         Date{45000.25},          Date{45000.25}                  },
        {"nome",         "açúca"s,              "açúca"s                      },
        {"obs",          std::string(3000,        'x'),                             std::string(3000, 'x')},
        {"cru",          kThree,                                 kThree                                                            },
        {"cru",        Bytes(4),Bytes(4)},
        {"objeto",      Bytes(70'000,                               std::byte{1}),                                                                                          Bytes(70'000, std::byte{1})},
        {"guid", kGuid,kGuid},
    };
    for (const auto& [column, given, stored] : cases) {
        SCOPED_TRACE(column);
        const RowId row = with(column, given);
        EXPECT_EQ(all().read(row).value()[at(column)], stored);
        RowReader reader = all().reader();
        const RowView* view = reader.read(row);
        ASSERT_NE(view, nullptr);
        // The same without the detour over Value.
        if (const auto* amount = std::get_if<Currency>(&stored)) {
            EXPECT_EQ(view->currency(at(column)), *amount);
        } else if (const auto* real = std::get_if<double>(&stored)) {
            EXPECT_EQ(view->real(at(column)), *real);
        } else if (const auto* date = std::get_if<Date>(&stored)) {
            EXPECT_EQ(view->date(at(column)), *date);
        } else if (const auto* text = std::get_if<std::string>(&stored)) {
            std::string buffer;
            EXPECT_EQ(view->text(at(column), buffer), *text);
        }
    }
}

TEST_P(Values, ThatTheColumnCantHoldAreRefusedInItsName) {
    const Numeric threeDecimals{
        false, {0, 0, 0, 12500},
         3
    };
    const struct {
        const char* column;
        Value value;
        Errc code;
    } cases[] = {
        {"sim",     "sim"s,                  Errc::outOfRange},
        {"byte",    whole(256),              Errc::outOfRange},
        {"byte",    whole(-1),               Errc::outOfRange},
        {"byte",    true,                    Errc::outOfRange},
        {"curto",   whole(32768),            Errc::outOfRange},
        {"curto",   whole(-32769),           Errc::outOfRange},
        {"longo",   whole(2147483648),       Errc::outOfRange},
        {"longo",   "1"s,                    Errc::outOfRange},
        {"longo",   1.0,                     Errc::outOfRange},
        {"valor",   whole(922337203685478),  Errc::outOfRange},
        {"valor",   whole(-922337203685478), Errc::outOfRange},
        {"valor",   1.0,                     Errc::outOfRange},
        {"simples", 3.5e38,                  Errc::outOfRange},
        {"simples", -3.5e38,                 Errc::outOfRange},
        {"simples", "1"s,                    Errc::outOfRange},
        {"duplo",   Currency{1},             Errc::outOfRange},
        {"data",    whole(1),                Errc::outOfRange},
        {"data",    Date{2958466},           Errc::outOfRange},
        {"nome",    whole(1),                Errc::outOfRange},
        {"nome",    "açúcar"s,             Errc::tooLong   },
        {"obs",     1.5,                     Errc::outOfRange},
        {"cru",     Bytes(5),                Errc::tooLong   },
        {"cru",     "abc"s,                  Errc::outOfRange},
        {"objeto",  "abc"s,                  Errc::outOfRange},
        {"guid",    "{00}"s,                 Errc::outOfRange},
        {"decimal", threeDecimals,           Errc::outOfRange},
        {"decimal", 1.0,                     Errc::outOfRange},
    };
    for (const auto& [column, value, code] : cases) {
        if (column == "decimal"s && GetParam() == Version::jet3)
            continue; // has none
        SCOPED_TRACE(column);
        EXPECT_THAT(sentenceOf([&, name = column, &given = value] { with(name, given); }, code),
                    HasSubstr("\""s + column + "\""));
        EXPECT_EQ(all().rowCount(), 0);
    }
}

TEST_P(Values, ThatAreNumbersButNotFiniteAreKept) {
    const double infinite = std::numeric_limits<double>::infinity();
    EXPECT_EQ(all().read(with("simples", infinite)).value()[at("simples")], Value(infinite));
    EXPECT_EQ(all().read(with("duplo", -infinite)).value()[at("duplo")], Value(-infinite));
}

TEST_P(Values, OfADecimalColumnHaveItsScale) {
    if (GetParam() == Version::jet3)
        return; // has no such type
    const Numeric amount{
        true, {0, 1, 2, 1250},
         2
    };
    EXPECT_EQ(all().read(with("decimal", amount)).value()[at("decimal")], Value(amount));
}

TEST_P(Values, OfAWholeRowAreOneForEachColumn) {
    EXPECT_EQ(errorOf([&] { all().insert(Row(3)); }), Errc::misuse);
    EXPECT_EQ(all().rowCount(), 0);
}

Column fixedColumn(ColumnType type, Version version, std::uint16_t length) {
    Column column;
    column.name = "fixo";
    column.type = type;
    column.length = length;
    column.fixed = true;
    column.compressed = true;
    column.codec = TextCodec(version);
    return column;
}

std::string bytesAsText(const Bytes& bytes) {
    std::string text;
    for (const std::byte byte : bytes)
        text += std::to_integer<char>(byte);
    return text;
}

TEST(FixedColumns, FillUpTextWithBlanksAndOtherBytesWithZeros) {
    const auto jet3 = fixedColumn(ColumnType::text, Version::jet3, 6);
    EXPECT_EQ(bytesAsText(encodeField(jet3, "ab"s).bytes), "ab    ");
    EXPECT_EQ(bytesAsText(encodeField(jet3, ""s).bytes), "      ");
    EXPECT_EQ(bytesAsText(encodeField(jet3, "abcdef"s).bytes), "abcdef");
    // Two bytes a character, though the column may compress: its place in the row has one length.
    const auto jet4 = fixedColumn(ColumnType::text, Version::jet4, 8);
    EXPECT_EQ(bytesAsText(encodeField(jet4, "abc"s).bytes), "a\0b\0c\0 \0"s);
    EXPECT_EQ(bytesAsText(encodeField(jet4, "a"s).bytes), "a\0 \0 \0 \0"s);
    const auto odd = fixedColumn(ColumnType::text, Version::jet4, 5);
    EXPECT_EQ(bytesAsText(encodeField(odd, "a"s).bytes), "a\0 \0\0"s) << "no half character";
    const auto bytes = fixedColumn(ColumnType::binary, Version::jet4, 4);
    EXPECT_EQ(encodeField(bytes, Bytes(2, std::byte{' '})).bytes,
              (Bytes{std::byte{' '}, std::byte{' '}, std::byte{0}, std::byte{0}}));
}

TEST(UnknownColumns, AreNotWritten) {
    const auto column = fixedColumn(static_cast<ColumnType>(0x11), Version::jet4, 4);
    EXPECT_THAT(sentenceOf([&] { (void)encodeField(column, Bytes(4)); }, Errc::unsupported),
                HasSubstr("\"fixo\""));
    EXPECT_FALSE(encodeField(column, Value{}).present);
}

class Widths : public RuleFile {};
INSTANTIATE_TEST_SUITE_P(, Widths, bothVersions(), versionName);

TEST_P(Widths, RowsTooLongForAPageAreRefused) {
    TableSpec spec{"largos", {}, {}};
    for (int i = 0; i < 40; ++i)
        spec.columns.push_back(
            {"c" + std::to_string(i), ColumnType::text, 255, false, 18, 0, false});
    Table& table = database_->createTable(spec);
    constexpr std::size_t full = 7; // of so many characters, in either format
    Row row(40);
    for (std::size_t i = 0; i < full; ++i)
        row[i] = std::string(255, 'x');
    const RowId stored = table.insert(row);
    EXPECT_EQ(table.read(stored), row);
    row[full] = std::string(255, 'x');
    EXPECT_EQ(errorOf([&] { table.insert(row); }), Errc::tooLong);
    std::ranges::fill(row, Value(std::string(255, 'x')));
    EXPECT_EQ(errorOf([&] { table.insert(row); }), Errc::tooLong) << "than a page, before its end";
    EXPECT_EQ(table.rowCount(), 1);
}

TEST_P(Widths, ARowOfFewBytesCanStillMoveAway) {
    Table& table = database_->createTable({"um", {{"b", ColumnType::boolean}}, {}});
    const RowId row = table.insert(Row{Value(true)});
    EXPECT_EQ(table.read(row), (Row{Value(true)}));
    // As long as the pointer that may have to stand in its place.
    const Bytes bytes = assembleRow(formatOf(GetParam()), table.definition(),
                                    {
                                        {true, {}, {}}
    });
    EXPECT_EQ(bytes.size(), 4U);
}

} // namespace
