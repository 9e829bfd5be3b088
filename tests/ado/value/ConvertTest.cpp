#include "ado/value/Convert.h"

#include "ado/Shop.h"
#include "ado/value/WrittenForm.h"
#include "jet/Numbers.h"
#include "jet/TableDefinition.h"

#include <bit>
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
    EXPECT_EQ(to(ColumnType::currency, "12.34"), Value{Currency{123400}});
    EXPECT_EQ(to(ColumnType::currency, "1.5"), Value{Currency{15000}});
    EXPECT_EQ(to(ColumnType::currency, "1.234"), Value{Currency{12340000}});
    EXPECT_EQ(to(ColumnType::currency, "0.500"), Value{Currency{5000}});
    EXPECT_EQ(to(ColumnType::currency, ",0001"), Value{Currency{1}});
    EXPECT_EQ(to(ColumnType::currency, "-922337203685477,5808"),
              Value{Currency{std::numeric_limits<std::int64_t>::min()}});
    for (const char* wrong : {"0,00001", "922337203685477,5808", "", "R$ 1", "1.23,4", "1.234.5"})
        EXPECT_EQ(errorOf([&] { (void)to(ColumnType::currency, wrong); }), Errc::outOfRange)
            << wrong;
}

TEST(Convert, ADoubleNeverBecomesAnAmount) {
    EXPECT_EQ(errorOf([] { (void)to(ColumnType::currency, Value{0.5}); }), Errc::outOfRange);
    EXPECT_EQ(to(ColumnType::currency, Value{std::int64_t{3}}), Value{Currency{30000}});
}

jet::Column decimalColumn(std::uint8_t precision, std::uint8_t scale) {
    jet::Column column = columnOf(ColumnType::numeric);
    column.precision = precision;
    column.scale = scale;
    return column;
}
Value decimal(const char* digits, std::uint8_t scale, bool negative = false) {
    return jet::numericFrom(negative, digits, scale).value();
}

TEST(Convert, AnAmountBecomesADecimalWhereItFits) {
    const jet::Column cents = decimalColumn(8, 2);
    EXPECT_EQ(ado::converted(Currency{4'368'800}, cents), decimal("43688", 2));
    EXPECT_EQ(ado::converted(Currency{-100}, cents), decimal("1", 2, true));
    EXPECT_EQ(ado::converted(Currency{}, cents), decimal("0", 2));
    EXPECT_EQ(ado::converted(Value{std::string("999.999,99")}, cents), decimal("99999999", 2));
    EXPECT_EQ(ado::converted(Value{std::int64_t{12}}, decimalColumn(3, 1)), decimal("120", 1));
    for (const Value& wrong : {Value{Currency{1}}, Value{Currency{10'000'000'000}},
                               Value{std::string("0,001")}, Value{std::string("")}, Value{0.5}})
        EXPECT_EQ(errorOf([&] { (void)ado::converted(wrong, cents); }), Errc::outOfRange);
}

TEST(Convert, ADecimalIsReadAsTheAmountThatItIs) {
    EXPECT_EQ(ado::asCurrency(decimal("43688", 2)), Currency{4'368'800});
    EXPECT_EQ(ado::asCurrency(decimal("1234", 3)), Currency{12'340}); // no thousand
    EXPECT_EQ(ado::asCurrency(decimal("9223372036854775807", 4)),
              Currency{std::numeric_limits<std::int64_t>::max()});
    EXPECT_EQ(ado::asCurrency(decimal("123456", 6)), Currency{1'235});
    EXPECT_EQ(ado::asCurrency(decimal("12345", 5, true)), Currency{-1'235});
    EXPECT_EQ(errorOf([] { (void)ado::asCurrency(decimal("99999999999999999999", 0)); }),
              Errc::outOfRange);
    EXPECT_EQ(ado::asText(decimal("1234", 3)), "1,234");
    EXPECT_EQ(ado::asInteger(decimal("70", 1)), 7);
    EXPECT_EQ(ado::asNumber(decimal("1234", 3)), 1.234);
    EXPECT_FALSE(jet::numericFrom(false, std::string(29, '1'), 0).has_value());
    EXPECT_EQ(jet::numericFrom(false, "0001234567890123456789012345678", 4)->text(),
              "123456789012345678901234.5678");
}

TEST(Convert, AnAmountBecomesAFractionOnlyIfItIsReadBackAsItIs) {
    const auto stored = [](ColumnType type, Currency amount) {
        const auto number = std::get<double>(to(type, amount));
        return ado::asCurrency(
            type == ColumnType::single ? jet::asWritten(static_cast<float>(number)) : number);
    };
    for (const std::int64_t fits :
         std::initializer_list<std::int64_t>{0, 4368800, -4368800, 1, 123456700000})
        for (const ColumnType type : {ColumnType::single, ColumnType::real})
            EXPECT_EQ(stored(type, Currency{fits}), Currency{fits});
    EXPECT_EQ(stored(ColumnType::real, Currency{12'345'678'900}), Currency{12'345'678'900});
    EXPECT_EQ(errorOf([] { (void)to(ColumnType::single, Currency{12'345'678'900}); }),
              Errc::outOfRange);
    EXPECT_EQ(errorOf([] {
                  (void)to(ColumnType::real, Currency{std::numeric_limits<std::int64_t>::max()});
              }),
              Errc::outOfRange);
}

TEST(Convert, ASingleIsTheNumberThatWasWritten) {
    EXPECT_EQ(jet::asWritten(436.88F), 436.88);
    EXPECT_EQ(jet::asWritten(-0.1F), -0.1);
    EXPECT_EQ(jet::asWritten(16777216.0F), 16777216.0);
    EXPECT_TRUE(std::isnan(jet::asWritten(std::nanf(""))));
    for (std::uint32_t bits = 1; bits < 0x7F800000U; bits += 7'654'321U) {
        const auto single = std::bit_cast<float>(bits);
        EXPECT_EQ(static_cast<float>(jet::asWritten(single)), single) << bits;
    }
}

TEST(Convert, TextBecomesADate) {
    EXPECT_EQ(to(ColumnType::date, "31/12/2024"), Value{day(2024, 12, 31)});
    EXPECT_EQ(to(ColumnType::date, "1/2/2024 06:00"),
              Value{jet::Date{day(2024, 2, 1).days + 0.25}});
    EXPECT_EQ(to(ColumnType::date, "01/02/2024 12:00:00"),
              Value{jet::Date{day(2024, 2, 1).days + 0.5}});
    for (const char* wrong :
         {"", "12/31/2024", "30/02/2024", "01/02/24", "01/02/2024 25:00", "hoje", "01/02/2024x",
          "01/02/2024 10:00x", "01/02/2024 10", "01/02/2024 -1:00", "01/02/2024 10:-1",
          "01/02/2024 10:60", "01/02/2024 10:00:-1", "01/02/2024 10:00:60", "-1/02/2024",
          "01/02/-024"})
        EXPECT_EQ(errorOf([&] { (void)to(ColumnType::date, wrong); }), Errc::outOfRange) << wrong;
    EXPECT_EQ(errorOf([] { (void)to(ColumnType::date, Value{1e9}); }), Errc::outOfRange);
}

TEST(Convert, OtherTypesBecomeEachOtherWhereNothingIsLost) {
    EXPECT_EQ(to(ColumnType::longInteger, Value{true}), Value{std::int64_t{-1}});
    EXPECT_EQ(to(ColumnType::longInteger, Value{Currency{20000}}), Value{std::int64_t{2}});
    EXPECT_EQ(to(ColumnType::longInteger, Value{Currency{-20000}}), Value{std::int64_t{-2}});
    EXPECT_EQ(errorOf([] { (void)to(ColumnType::longInteger, Value{Currency{20001}}); }),
              Errc::outOfRange);
    EXPECT_EQ(to(ColumnType::boolean, "Não"), Value{false});
    EXPECT_EQ(to(ColumnType::boolean, "SIM"), Value{true});
    EXPECT_EQ(to(ColumnType::boolean, Value{std::int64_t{2}}), Value{true});
    EXPECT_EQ(errorOf([] { (void)to(ColumnType::boolean, "talvez"); }), Errc::outOfRange);
    EXPECT_EQ(to(ColumnType::text, Value{std::int64_t{12}}), Value{std::string("12")});
    EXPECT_EQ(to(ColumnType::text, Value{}), Value{});
    EXPECT_EQ(to(ColumnType::real, "1.234,5"), Value{1234.5});
    EXPECT_EQ(to(ColumnType::real, "-0,5"), Value{-0.5});
    EXPECT_EQ(errorOf([] { (void)to(ColumnType::real, std::string(400, '9').c_str()); }),
              Errc::outOfRange)
        << "more than a number can be";
}

TEST(Convert, TextIsAsTheOperatorReadsIt) {
    EXPECT_EQ(ado::asText(Value{}), "");
    EXPECT_EQ(ado::asText(Value{Currency{12345600}}), "1234,56");
    EXPECT_EQ(ado::asText(Value{Currency{-1}}), "-0,0001");
    EXPECT_EQ(ado::asText(Value{Currency{std::numeric_limits<std::int64_t>::min()}}),
              "-922337203685477,5808");
    EXPECT_EQ(ado::asText(Value{day(2024, 2, 1)}), "01/02/2024");
    EXPECT_EQ(ado::asText(Value{jet::Date{day(2024, 2, 1).days + 0.5}}), "01/02/2024 12:00:00");
    EXPECT_EQ(ado::asText(Value{jet::Date{day(2024, 2, 1).days + 5.0 / 1440}}),
              "01/02/2024 00:05:00");
    EXPECT_EQ(ado::asText(Value{jet::Date{day(2024, 2, 1).days + 7.0 / 86400}}),
              "01/02/2024 00:00:07");
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

TEST(Convert, WhatIsNullIsNothingOfEachType) {
    EXPECT_EQ(ado::asInteger({}), 0);
    EXPECT_EQ(ado::asCurrency({}), Currency{});
    EXPECT_EQ(ado::asNumber({}), 0);
    EXPECT_EQ(ado::asDate({}), jet::Date{});
    EXPECT_FALSE(ado::asBoolean({}));
    EXPECT_EQ(to(ColumnType::text, Value{}), Value{});
}

TEST(Convert, WhatIsNoneIsRefusedAsSuch) {
    const Value bytes = jet::Bytes(3);
    const Value word = std::string("abc");
    EXPECT_EQ(errorOf([&] { (void)ado::asInteger(word); }), Errc::outOfRange);
    EXPECT_EQ(errorOf([&] { (void)ado::asInteger(1e300); }), Errc::outOfRange);
    EXPECT_EQ(errorOf([&] { (void)ado::asCurrency(word); }), Errc::outOfRange);
    EXPECT_EQ(errorOf([&] { (void)ado::asCurrency(1e300); }), Errc::outOfRange);
    EXPECT_EQ(errorOf([&] { (void)ado::asNumber(word); }), Errc::outOfRange);
    EXPECT_EQ(errorOf([&] { (void)ado::asNumber(bytes); }), Errc::outOfRange);
    EXPECT_EQ(errorOf([&] { (void)ado::asDate(word); }), Errc::outOfRange);
    EXPECT_EQ(errorOf([&] { (void)ado::asDate(1e9); }), Errc::outOfRange);
    EXPECT_EQ(errorOf([&] { (void)ado::asBoolean(word); }), Errc::outOfRange);
    EXPECT_EQ(errorOf([&] { (void)ado::asBoolean(bytes); }), Errc::outOfRange);
    EXPECT_EQ(errorOf([&] { (void)ado::asText(bytes); }), Errc::outOfRange);
}

TEST(Convert, ARefusalSaysWhatTheFieldAsksForAndWhatItGot) {
    const struct {
        ColumnType type;
        const char* asks;
    } cases[] = {
        {ColumnType::boolean,     "sim ou não"                    },
        {ColumnType::byte,        "um número inteiro"             },
        {ColumnType::integer,     "um número inteiro"             },
        {ColumnType::longInteger, "um número inteiro"             },
        {ColumnType::currency,    "um valor em dinheiro"           },
        {ColumnType::single,      "até sete algarismos"           },
        {ColumnType::real,        "até quinze algarismos"         },
        {ColumnType::date,        "uma data (dia/mês/ano)"        },
        {ColumnType::text,        "um texto"                       },
        {ColumnType::memo,        "um texto"                       },
        {ColumnType::numeric,     "um número de até 0 algarismos"},
    };
    for (const auto& [type, asks] : cases) {
        try {
            (void)to(type, Value{jet::Bytes(2)});
            ADD_FAILURE() << asks;
        } catch (const jet::Error& error) {
            const std::string said = error.what();
            EXPECT_NE(said.find(asks), std::string::npos) << said;
            EXPECT_NE(said.find("um valor binário"), std::string::npos) << said;
        }
    }
    // Other types take what they are given, and the table decides.
    EXPECT_EQ(to(ColumnType::binary, Value{jet::Bytes(2)}), Value{jet::Bytes(2)});
    EXPECT_EQ(to(ColumnType::guid, Value{jet::Guid{}}), Value{jet::Guid{}});
}

TEST(Convert, NumbersBecomeEachOtherWhereNothingIsLost) {
    EXPECT_EQ(to(ColumnType::byte, Value{true}), Value{std::int64_t{-1}}); // the table refuses it
    EXPECT_EQ(to(ColumnType::integer, Value{false}), Value{std::int64_t{0}});
    EXPECT_EQ(to(ColumnType::longInteger, Value{7.0}), Value{std::int64_t{7}});
    EXPECT_EQ(to(ColumnType::longInteger, decimal("70", 1)), Value{std::int64_t{7}});
    EXPECT_EQ(to(ColumnType::real, decimal("75", 1)), Value{7.5});
    EXPECT_EQ(to(ColumnType::real, day(2024, 1, 1)), Value{45292.0});
    EXPECT_EQ(to(ColumnType::real, "7,5"), Value{7.5});
    EXPECT_EQ(to(ColumnType::date, Value{45292.5}), Value{jet::Date{45292.5}});
    EXPECT_EQ(to(ColumnType::date, Value{std::int64_t{45292}}), Value{day(2024, 1, 1)});
    EXPECT_EQ(to(ColumnType::boolean, Value{Currency{1}}), Value{true});
    EXPECT_EQ(to(ColumnType::boolean, Value{0.0}), Value{false});
    EXPECT_EQ(ado::converted(decimal("125", 2), decimalColumn(8, 3)), decimal("1250", 3));
    EXPECT_EQ(to(ColumnType::currency, Value{std::int64_t{922337203685477}}),
              Value{Currency{9'223'372'036'854'770'000}});
    for (const Value& wrong :
         {Value{std::int64_t{922337203685478}}, Value{std::int64_t{-922337203685478}}})
        EXPECT_EQ(errorOf([&] { (void)to(ColumnType::currency, wrong); }), Errc::outOfRange);
    for (const Value& wrong : {Value{7.5}, Value{1e300}, Value{Currency{1}}, decimal("75", 1)})
        EXPECT_EQ(errorOf([&] { (void)to(ColumnType::longInteger, wrong); }), Errc::outOfRange);
    EXPECT_EQ(errorOf([&] { (void)to(ColumnType::real, "abc"); }), Errc::outOfRange);
    EXPECT_EQ(ado::asCurrency(decimal("123444", 6)), Currency{1'234});
    EXPECT_EQ(errorOf([] { (void)ado::asCurrency(decimal("92233720368547758079", 5)); }),
              Errc::outOfRange);
    EXPECT_EQ(ado::asText(jet::Guid{}), "{00000000-0000-0000-0000-000000000000}");
}

} // namespace
