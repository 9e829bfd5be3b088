#include "ado/Convert.h"

#include "ado/Shop.h"
#include "jet/TableDefinition.h"

#include <cmath>
#include <limits>

namespace {

using jet::ColumnType;
using jet::Currency;
using jet::Errc;
using jet::Value;

jet::Column columnOf(ColumnType type) {
    jet::Column column;
    column.name = "campo";
    column.type = type;
    return column;
}
Value to(ColumnType type, const Value& value) { return ado::converted(value, columnOf(type)); }
Value to(ColumnType type, const char* text) { return to(type, Value{std::string(text)}); }

TEST(Convert, TextBecomesAWholeNumber) {
    EXPECT_EQ(to(ColumnType::longInteger, "104"), Value{std::int64_t{104}});
    EXPECT_EQ(to(ColumnType::longInteger, "  -007 "), Value{std::int64_t{-7}});
    EXPECT_EQ(to(ColumnType::longInteger, "1.234.567"), Value{std::int64_t{1234567}});
    EXPECT_EQ(to(ColumnType::longInteger, "12,00"), Value{std::int64_t{12}});
    for (const char* wrong : {"", " ", "x", "12x", "1 2", "12,5", "--1", "+", "-", ",", ".",
                              "1,2,3", "12.34,5", "99999999999999999999", "1e3", "0x10"})
        EXPECT_EQ(errorOf([&] { (void)to(ColumnType::longInteger, wrong); }), Errc::outOfRange)
            << wrong;
}

TEST(Convert, TextBecomesAnExactAmount) {
    EXPECT_EQ(to(ColumnType::currency, "1.234,56"), Value{Currency{12345600}});
    EXPECT_EQ(to(ColumnType::currency, "1234.56"), Value{Currency{12345600}});
    EXPECT_EQ(to(ColumnType::currency, "1.234"), Value{Currency{12340000}});
    EXPECT_EQ(to(ColumnType::currency, "0.500"), Value{Currency{5000}});
    EXPECT_EQ(to(ColumnType::currency, ",0001"), Value{Currency{1}});
    EXPECT_EQ(to(ColumnType::currency, "-922337203685477,5808"),
              Value{Currency{std::numeric_limits<std::int64_t>::min()}});
    for (const char* wrong : {"0,00001", "922337203685477,5808", "", "R$ 1"})
        EXPECT_EQ(errorOf([&] { (void)to(ColumnType::currency, wrong); }), Errc::outOfRange)
            << wrong;
}

TEST(Convert, ADoubleNeverBecomesAnAmount) {
    EXPECT_EQ(errorOf([] { (void)to(ColumnType::currency, Value{0.5}); }), Errc::outOfRange);
    EXPECT_EQ(to(ColumnType::currency, Value{std::int64_t{3}}), Value{Currency{30000}});
}

TEST(Convert, TextBecomesADate) {
    EXPECT_EQ(to(ColumnType::date, "31/12/2024"), Value{day(2024, 12, 31)});
    EXPECT_EQ(to(ColumnType::date, "1/2/2024 06:00"),
              Value{jet::Date{day(2024, 2, 1).days + 0.25}});
    EXPECT_EQ(to(ColumnType::date, "01/02/2024 12:00:00"),
              Value{jet::Date{day(2024, 2, 1).days + 0.5}});
    for (const char* wrong : {"", "12/31/2024", "30/02/2024", "01/02/24", "01/02/2024 25:00",
                              "hoje", "01/02/2024x", "01/02/2024 10:00x", "01/02/2024 10"})
        EXPECT_EQ(errorOf([&] { (void)to(ColumnType::date, wrong); }), Errc::outOfRange) << wrong;
    EXPECT_EQ(errorOf([] { (void)to(ColumnType::date, Value{1e9}); }), Errc::outOfRange);
}

TEST(Convert, OtherTypesBecomeEachOtherWhereNothingIsLost) {
    EXPECT_EQ(to(ColumnType::longInteger, Value{true}), Value{std::int64_t{-1}});
    EXPECT_EQ(to(ColumnType::longInteger, Value{Currency{20000}}), Value{std::int64_t{2}});
    EXPECT_EQ(errorOf([] { (void)to(ColumnType::longInteger, Value{Currency{20001}}); }),
              Errc::outOfRange);
    EXPECT_EQ(to(ColumnType::boolean, "Não"), Value{false});
    EXPECT_EQ(to(ColumnType::boolean, "SIM"), Value{true});
    EXPECT_EQ(to(ColumnType::boolean, Value{std::int64_t{2}}), Value{true});
    EXPECT_EQ(errorOf([] { (void)to(ColumnType::boolean, "talvez"); }), Errc::outOfRange);
    EXPECT_EQ(to(ColumnType::text, Value{std::int64_t{12}}), Value{std::string("12")});
    EXPECT_EQ(to(ColumnType::text, Value{}), Value{});
    EXPECT_EQ(to(ColumnType::real, "1.234,5"), Value{1234.5});
}

TEST(Convert, TextIsAsTheOperatorReadsIt) {
    EXPECT_EQ(ado::asText(Value{}), "");
    EXPECT_EQ(ado::asText(Value{Currency{12345600}}), "1234,56");
    EXPECT_EQ(ado::asText(Value{Currency{-1}}), "-0,0001");
    EXPECT_EQ(ado::asText(Value{Currency{std::numeric_limits<std::int64_t>::min()}}),
              "-922337203685477,5808");
    EXPECT_EQ(ado::asText(Value{day(2024, 2, 1)}), "01/02/2024");
    EXPECT_EQ(ado::asText(Value{jet::Date{day(2024, 2, 1).days + 0.5}}), "01/02/2024 12:00:00");
    EXPECT_EQ(ado::asText(Value{0.5}), "0,5");
    EXPECT_EQ(ado::asText(Value{true}), "Verdadeiro");
}

TEST(Convert, WhatTextShowsTheFieldTakesBack) {
    for (const Value& value : {Value{Currency{-12345678}}, Value{Currency{10000}}})
        EXPECT_EQ(to(ColumnType::currency, Value{ado::asText(value)}), value);
    for (const Value& value :
         {Value{day(1890, 5, 6)}, Value{jet::Date{day(2024, 5, 6).days + 0.75}}})
        EXPECT_EQ(to(ColumnType::date, Value{ado::asText(value)}), value);
    for (const Value& value : {Value{true}, Value{false}})
        EXPECT_EQ(to(ColumnType::boolean, Value{ado::asText(value)}), value);
}

TEST(Convert, NumbersAreReadFromWhatIsStored) {
    EXPECT_EQ(ado::asInteger(Value{}), 0);
    EXPECT_EQ(ado::asInteger(Value{Currency{15000}}), 2);
    EXPECT_EQ(ado::asInteger(Value{std::string("000123")}), 123);
    EXPECT_EQ(ado::asCurrency(Value{0.1 + 0.2}), Currency{3000});
    EXPECT_EQ(ado::asCurrency(Value{std::int64_t{7}}), Currency{70000});
    EXPECT_EQ(errorOf([] { (void)ado::asInteger(Value{std::string("x")}); }), Errc::outOfRange);
    EXPECT_EQ(errorOf([] { (void)ado::asInteger(Value{1e300}); }), Errc::outOfRange);
    EXPECT_EQ(errorOf([] { (void)ado::asCurrency(Value{std::nan("")}); }), Errc::outOfRange);
    EXPECT_TRUE(ado::asBoolean(Value{std::int64_t{-1}}));
}

} // namespace
