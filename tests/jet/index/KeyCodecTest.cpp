#include "jet/index/KeyCodec.h"

#include "jet/Hex.h"
#include "jet/Sentences.h"
#include "jet/row/StoredNumeric.h"
#include "jet/text/Collation.h"
#include "jet/text/TextCodec.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <sstream>
#include <string>

namespace jet {
namespace {

Bytes fromHex(const std::string& digits) {
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(static_cast<std::byte>(std::stoi(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}

const TextCodec kCodec3(Version::jet3);
const TextCodec kCodec4(Version::jet4);

/// A column and the direction in which an index has it.
struct KeyColumn {
    Column column;
    bool ascending;
};

KeyColumn column(ColumnType type, bool ascending = true, Version version = Version::jet4) {
    KeyColumn key{{}, ascending};
    key.column.type = type;
    key.column.collation = &Collation::general(version);
    key.column.codec = version == Version::jet3 ? kCodec3 : kCodec4;
    return key;
}

std::string keyOf(const KeyColumn& index, const Value& value) {
    Bytes key;
    appendKey(key, index.column, index.ascending, value);
    return hex(key);
}
std::string storedKeyOf(const KeyColumn& index, const Bytes& stored) {
    Bytes key;
    appendStoredKey(key, index.column, index.ascending, stored);
    return hex(key);
}

Numeric numeric(bool negative, const std::array<std::uint32_t, 4>& words, std::uint8_t scale) {
    return {negative, words, scale};
}

template <class T>
Bytes stored(T value) {
    Bytes bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

/// The value that a column reads from its stored bytes.
template <class T>
T from(const Bytes& bytes) {
    T value{};
    EXPECT_EQ(bytes.size(), sizeof value);
    std::memcpy(&value, bytes.data(), sizeof value);
    return value;
}
Value valueOf(ColumnType type, const TextCodec& codec, const Bytes& bytes) {
    switch (type) {
    case ColumnType::byte:
        return std::int64_t{from<std::uint8_t>(bytes)};
    case ColumnType::integer:
        return std::int64_t{from<std::int16_t>(bytes)};
    case ColumnType::longInteger:
        return std::int64_t{from<std::int32_t>(bytes)};
    case ColumnType::currency:
        return from<Currency>(bytes);
    case ColumnType::single:
        return double{from<float>(bytes)};
    case ColumnType::real:
        return from<double>(bytes);
    case ColumnType::date:
        return from<Date>(bytes);
    case ColumnType::guid:
        return from<Guid>(bytes);
    default:
        return codec.decode(bytes);
    }
}

/// Jet 4 text as the vectors write it: printable ASCII, all else as \uXXXX.
Bytes unitsOf(const std::string& text) {
    Bytes units;
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto unit = static_cast<unsigned>(static_cast<unsigned char>(text[i]));
        if (text.compare(i, 2, "\\u") == 0) {
            unit = static_cast<unsigned>(std::stoi(text.substr(i + 2, 4), nullptr, 16));
            i += 5;
        }
        units.push_back(static_cast<std::byte>(unit));
        units.push_back(static_cast<std::byte>(unit >> 8));
    }
    return units;
}

TEST(Keys, AreThoseOfRealFiles) {
    const std::map<std::string, ColumnType> types = {
        {"bool",     ColumnType::boolean    },
        {"byte",     ColumnType::byte       },
        {"int16",    ColumnType::integer    },
        {"int32",    ColumnType::longInteger},
        {"currency", ColumnType::currency   },
        {"single",   ColumnType::single     },
        {"double",   ColumnType::real       },
        {"datetime", ColumnType::date       },
        {"guid",     ColumnType::guid       },
        {"text",     ColumnType::text       }
    };
    std::ifstream file(JET_TEST_DATA "/testvectors.tsv");
    ASSERT_TRUE(file) << "no " JET_TEST_DATA "/testvectors.tsv";
    int checked = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with('#'))
            continue;
        std::istringstream fields(line);
        std::string jet;
        std::string type;
        std::string direction;
        std::string value;
        std::string expected;
        for (std::string* field : {&jet, &type, &direction, &value, &expected})
            std::getline(fields, *field, '\t');
        ASSERT_TRUE(types.contains(type)) << line;
        const Version version = jet == "3" ? Version::jet3 : Version::jet4;
        const KeyColumn index = column(types.at(type), direction == "asc", version);
        if (value == "NULL") {
            EXPECT_EQ(keyOf(index, {}), expected) << line;
        } else if (value == "TRUE" || value == "FALSE") {
            EXPECT_EQ(keyOf(index, value == "TRUE"), expected) << line;
        } else {
            const std::string content = value.substr(2);
            const Bytes bytes = value.starts_with("t:") ? unitsOf(content) : fromHex(content);
            EXPECT_EQ(storedKeyOf(index, bytes), expected) << line;
            EXPECT_EQ(keyOf(index, valueOf(index.column.type, index.column.codec, bytes)), expected)
                << line;
        }
        ++checked;
    }
    EXPECT_EQ(checked, 221);
}

TEST(Keys, OfPlainValues) {
    const auto asc = [](ColumnType type) { return column(type, true); };
    const auto desc = [](ColumnType type) { return column(type, false); };
    EXPECT_EQ(keyOf(asc(ColumnType::longInteger), std::int64_t{1}), "7f80000001");
    EXPECT_EQ(keyOf(desc(ColumnType::longInteger), std::int64_t{1}), "807ffffffe");
    EXPECT_EQ(keyOf(asc(ColumnType::currency), Currency{0}), "7f8000000000000000");
    EXPECT_EQ(keyOf(asc(ColumnType::boolean), false), "7fff");
    EXPECT_EQ(keyOf(desc(ColumnType::boolean), true), "80ff");
    EXPECT_EQ(keyOf(asc(ColumnType::text), {}), "00");
    EXPECT_EQ(keyOf(desc(ColumnType::currency), {}), "ff");
    EXPECT_EQ(keyOf(asc(ColumnType::text), std::string()), "7f0100");
    EXPECT_EQ(keyOf(desc(ColumnType::text), std::string()), "80feff00");
    EXPECT_EQ(keyOf(desc(ColumnType::text), std::string("e")), "80aefeff00");
    EXPECT_EQ(keyOf(column(ColumnType::text, false, Version::jet3), std::string("A")), "809fff");
}

TEST(Keys, OfColumnsFollowEachOther) {
    Bytes key;
    appendKey(key, column(ColumnType::text).column, true, std::string("e"));
    appendNullKey(key, true);
    appendBooleanKey(key, true, true);
    appendStoredKey(key, column(ColumnType::byte).column, false, Bytes{std::byte{1}});
    EXPECT_EQ(hex(key), "7f510100"
                        "00"
                        "7f00"
                        "80fe");
}

TEST(Keys, OfBinaryValuesGoInPiecesOfEight) {
    const auto asc = column(ColumnType::binary);
    const auto desc = column(ColumnType::binary, false);
    EXPECT_EQ(keyOf(asc, Bytes{}), "7f");
    EXPECT_EQ(keyOf(asc, fromHex("0102")), "7f010200000000000002");
    EXPECT_EQ(keyOf(desc, fromHex("0102")), "80fefdfffffffffffffd");
    EXPECT_EQ(keyOf(asc, fromHex("0102030405060708")), "7f010203040506070808");
    EXPECT_EQ(keyOf(asc, fromHex("010203040506070809")), "7f010203040506070809090000000000000001");
    EXPECT_EQ(keyOf(desc, fromHex("010203040506070809")), "80fefdfcfbfaf9f8f709f6fffffffffffffffe");
    EXPECT_EQ(storedKeyOf(asc, fromHex("0102")), keyOf(asc, fromHex("0102")));
}

TEST(Keys, OfNumericsKeepTheirSignByteInBothDirections) {
    const Numeric positive = numeric(false, {0, 0, 0, 1}, 2);
    const Numeric negative = numeric(true, {0, 0, 0, 1}, 2);
    KeyColumn asc = column(ColumnType::numeric);
    asc.column.scale = 2;
    KeyColumn desc = asc;
    desc.ascending = false;
    const std::string one = "00000000000000000000000000000001";
    const std::string complement = "fffffffffffffffffffffffffffffffe";
    EXPECT_EQ(keyOf(asc, positive), "7fff" + one);
    EXPECT_EQ(keyOf(asc, negative), "7f00" + complement);
    EXPECT_EQ(keyOf(desc, positive), "80ff" + complement);
    EXPECT_EQ(keyOf(desc, negative), "8000" + one);
    EXPECT_EQ(keyOf(asc, numeric(false, {1, 2, 3, 0x0A0B0C0D}, 2)),
              "7fff0000000100000002000000030a0b0c0d");
    EXPECT_EQ(storedKeyOf(asc, fromHex("8001000000020000000300000004000000")),
              keyOf(asc, numeric(true, {1, 2, 3, 4}, 2)));
}

// One bit of its first byte says that a number is negative; rows and keys read the same bytes.
TEST(Keys, OfStoredNumericsHaveTheSignThatTheirRowReads) {
    for (const auto& [digits, isNegative] : {std::pair("00", false), std::pair("01", false),
                                             std::pair("80", true), std::pair("81", true)}) {
        const Bytes stored = fromHex(digits + std::string("00000000000000000000000001000000"));
        const Numeric read = StoredNumeric::read(stored, 0);
        EXPECT_EQ(read.negative, isNegative) << digits;
        EXPECT_EQ(storedKeyOf(column(ColumnType::numeric), stored),
                  keyOf(column(ColumnType::numeric), read))
            << digits;
    }
}

TEST(Keys, OfMemosAreThoseOfTexts) {
    for (const Version version : {Version::jet3, Version::jet4}) {
        const std::string text = "Observações d'água " + std::string(300, 'x');
        EXPECT_EQ(keyOf(column(ColumnType::memo, true, version), text),
                  keyOf(column(ColumnType::text, true, version), text));
        EXPECT_EQ(keyOf(column(ColumnType::memo, true, version), text),
                  keyOf(column(ColumnType::memo, true, version), text + "y"));
    }
}

TEST(Keys, OfStoredTextDoNotDependOnItsCompression) {
    const std::string text = "Ação d'água";
    for (const bool ascending : {true, false}) {
        const KeyColumn index = column(ColumnType::text, ascending);
        EXPECT_EQ(storedKeyOf(index, kCodec4.encode(text, true, false)), keyOf(index, text));
        EXPECT_EQ(storedKeyOf(index, kCodec4.encode(text, false, false)), keyOf(index, text));
        const KeyColumn index3 = column(ColumnType::text, ascending, Version::jet3);
        EXPECT_EQ(storedKeyOf(index3, kCodec3.encode(text, false, false)), keyOf(index3, text));
    }
}

/// Orders random values by their keys, both ways, and expects the order of the values.
template <class T, class Make, class Less>
void expectOrder(ColumnType type, unsigned seed, Make&& make, Less&& less) {
    std::mt19937_64 random(seed);
    for (const bool ascending : {true, false}) {
        const KeyColumn index = column(type, ascending);
        for (int round = 0; round < 20000; ++round) {
            const T a = make(random);
            const T b = make(random);
            Bytes keyA;
            Bytes keyB;
            appendKey(keyA, index.column, ascending, a);
            appendKey(keyB, index.column, ascending, b);
            ASSERT_EQ(keyA < keyB, ascending ? less(a, b) : less(b, a));
            ASSERT_EQ(keyB < keyA, ascending ? less(b, a) : less(a, b));
        }
    }
}

/// Whole numbers of every size, both signs.
std::int64_t anyNumber(std::mt19937_64& random) {
    return static_cast<std::int64_t>(random()) >> (random() % 64);
}

TEST(Order, OfKeysIsThatOfNumbers) {
    const auto less = std::less<>();
    expectOrder<std::int64_t>(
        ColumnType::longInteger, 1,
        [](auto& random) { return std::int64_t{static_cast<std::int32_t>(anyNumber(random))}; },
        less);
    expectOrder<std::int64_t>(
        ColumnType::integer, 2,
        [](auto& random) { return std::int64_t{static_cast<std::int16_t>(anyNumber(random))}; },
        less);
    expectOrder<std::int64_t>(
        ColumnType::byte, 3,
        [](auto& random) { return std::int64_t{static_cast<std::uint8_t>(anyNumber(random))}; },
        less);
}

TEST(Order, OfKeysIsThatOfAmounts) {
    expectOrder<Currency>(
        ColumnType::currency, 4, [](auto& random) { return Currency{anyNumber(random)}; },
        std::less<>());
}

TEST(Order, OfKeysIsThatOfReals) {
    const auto any = [](auto& random) {
        return static_cast<double>(anyNumber(random)) / static_cast<double>(1 + random() % 1000);
    };
    expectOrder<double>(ColumnType::real, 5, any, std::less<>());
    const auto anySingle = [&](auto& random) { return double{static_cast<float>(any(random))}; };
    expectOrder<double>(ColumnType::single, 6, anySingle, std::less<>());
}

TEST(Order, OfKeysIsThatOfStoredDates) {
    // Of the stored number, as the format has it: before 1899-12-30 later times of a day come
    // first.
    expectOrder<Date>(
        ColumnType::date, 7,
        [](auto& random) {
            return Date{
                static_cast<double>(static_cast<std::int64_t>(random() % 3600000) - 600000) +
                static_cast<double>(random() % 86400) / 86400};
        },
        [](const Date& a, const Date& b) { return a.days < b.days; });
}

TEST(Order, OfKeysIsThatOfBinaries) {
    expectOrder<Bytes>(
        ColumnType::binary, 8,
        [](auto& random) {
            Bytes bytes;
            for (auto left = 1 + random() % 18; left > 0; --left)
                bytes.push_back(static_cast<std::byte>(1 + random() % 2));
            return bytes;
        },
        std::less<>());
}

TEST(Order, PutsNullsFirstAndInDescendingIndexesLast) {
    for (const ColumnType type : {ColumnType::text, ColumnType::memo}) {
        EXPECT_LT(keyOf(column(type), {}), keyOf(column(type), std::string()));
        EXPECT_GT(keyOf(column(type, false), {}), keyOf(column(type, false), std::string()));
    }
}

TEST(Keys, RefuseValuesOfAnotherType) {
    const auto refused = [](ColumnType type, const Value& value) {
        return errorOf([&] { keyOf(column(type), value); }) == Errc::misuse;
    };
    EXPECT_TRUE(refused(ColumnType::currency, std::int64_t{1}));
    EXPECT_TRUE(refused(ColumnType::longInteger, Currency{1}));
    EXPECT_TRUE(refused(ColumnType::longInteger, true));
    EXPECT_TRUE(refused(ColumnType::boolean, std::int64_t{1}));
    EXPECT_TRUE(refused(ColumnType::boolean, std::monostate()));
    EXPECT_TRUE(refused(ColumnType::real, std::int64_t{1}));
    EXPECT_TRUE(refused(ColumnType::date, 1.0));
    EXPECT_TRUE(refused(ColumnType::text, Bytes()));
    EXPECT_TRUE(refused(ColumnType::binary, std::string()));
    EXPECT_TRUE(refused(ColumnType::guid, Bytes(16)));
    EXPECT_TRUE(refused(ColumnType::numeric, Currency{1}));
    EXPECT_TRUE(refused(ColumnType::numeric, numeric(false, {}, 3))); // another scale
    KeyColumn unordered = column(ColumnType::text);
    unordered.column.collation = nullptr;
    EXPECT_EQ(errorOf([&] { keyOf(unordered, std::string("a")); }), Errc::misuse);
}

TEST(Keys, RefuseWhatDoesNotFit) {
    const auto refused = [](ColumnType type, std::int64_t value) {
        return errorOf([&] { keyOf(column(type), value); });
    };
    EXPECT_EQ(refused(ColumnType::byte, 256), Errc::outOfRange);
    EXPECT_EQ(refused(ColumnType::byte, -1), Errc::outOfRange);
    EXPECT_EQ(refused(ColumnType::integer, 32768), Errc::outOfRange);
    EXPECT_EQ(refused(ColumnType::longInteger, -2147483649), Errc::outOfRange);
    EXPECT_EQ(
        errorOf([] { keyOf(column(ColumnType::text, true, Version::jet3), std::string("Ω")); }),
        Errc::outOfRange);
    EXPECT_EQ(errorOf([] { keyOf(column(ColumnType::ole), Bytes{}); }), Errc::unsupported);
    EXPECT_EQ(errorOf([] { keyOf(column(static_cast<ColumnType>(0x0D)), Bytes{}); }),
              Errc::unsupported);
}

TEST(Keys, RefuseStoredBytesOfAnotherSize) {
    for (const ColumnType type : {ColumnType::byte, ColumnType::integer, ColumnType::longInteger,
                                  ColumnType::currency, ColumnType::single, ColumnType::real,
                                  ColumnType::date, ColumnType::guid, ColumnType::numeric}) {
        EXPECT_EQ(errorOf([&] { storedKeyOf(column(type), Bytes(3)); }), Errc::corrupt);
        EXPECT_EQ(errorOf([&] { storedKeyOf(column(type), {}); }), Errc::corrupt);
    }
    EXPECT_EQ(errorOf([] { storedKeyOf(column(ColumnType::text), Bytes(3)); }), Errc::corrupt);
    EXPECT_EQ(errorOf([] { storedKeyOf(column(ColumnType::boolean), Bytes(1)); }), Errc::misuse);
    EXPECT_EQ(storedKeyOf(column(ColumnType::longInteger), stored(std::int32_t{-1})), "7f7fffffff");
}

} // namespace
} // namespace jet
