#include "jet/text/Collation.h"

#include "jet/Hex.h"
#include "jet/text/TextCodec.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>

namespace jet {
namespace {

int sign(int value) { return (value > 0) - (value < 0); }

Bytes key(Version version, std::u16string_view units) {
    Bytes bytes;
    Collation::general(version).appendKey(bytes, units);
    return bytes;
}
std::string key4(std::u16string_view units) { return hex(key(Version::jet4, units)); }
std::string key3(std::u16string_view units) { return hex(key(Version::jet3, units)); }

/// Which of two texts comes first, told by comparing as by sorting.
int compare(Version version, std::string_view a, std::string_view b) {
    const Collation& collation = Collation::general(version);
    const int order = collation.compare(a, b);
    Bytes keyA;
    Bytes keyB;
    collation.appendSortKey(keyA, a);
    collation.appendSortKey(keyB, b);
    EXPECT_EQ(keyA < keyB ? -1 : int{keyB < keyA}, sign(order)) << a << " | " << b;
    return order;
}

constexpr Version kVersions[] = {Version::jet3, Version::jet4};

TEST(Orders, AreKnownByCodeVersionAndCodePage) {
    EXPECT_EQ(Collation::find(Version::jet3, {0x0409, 0, 1252}),
              &Collation::general(Version::jet3));
    EXPECT_EQ(Collation::find(Version::jet3, {0, 0, 1252}), &Collation::general(Version::jet3));
    EXPECT_EQ(Collation::find(Version::jet3, {0x0409, 0, 1250}), nullptr);
    EXPECT_EQ(Collation::find(Version::jet4, {0x0409, 0, 0}), &Collation::general(Version::jet4));
    EXPECT_EQ(Collation::find(Version::jet4, {0, 0, 0}), &Collation::general(Version::jet4));
    EXPECT_EQ(Collation::find(Version::jet4, {0x0409, 1, 1252}), nullptr);
    EXPECT_EQ(Collation::general(Version::jet3).version(), Version::jet3);
}

SortOrder orderOf(int lcid) { return {static_cast<std::uint16_t>(lcid), 0, 1252}; }

TEST(Orders, OfLanguagesThatFollowTheGeneralOneAreIt) {
    for (const Version version : kVersions)
        for (const int lcid : {1033, 2057, 1046, 2070, 1040, 2064, 1031, 2055, 3079, 4103, 5127})
            EXPECT_EQ(Collation::find(version, orderOf(lcid)), &Collation::general(version))
                << lcid;
    for (const int lcid : {1043, 2067, 1057}) { // in Jet 3 Dutch has an order of its own
        EXPECT_EQ(Collation::find(Version::jet4, orderOf(lcid)),
                  &Collation::general(Version::jet4));
        EXPECT_EQ(Collation::find(Version::jet3, orderOf(lcid)), nullptr);
    }
}

TEST(Orders, OfOtherLanguagesAreNotKnown) {
    // Spanish of both kinds, French, Czech, Danish, Greek, Finnish, Hungarian, Icelandic,
    // Norwegian, Polish, Swedish, Turkish, Russian, Slovenian, the computer's own.
    for (const Version version : kVersions)
        for (const int lcid : {1034, 3082, 1036, 3084, 1029, 1030, 1032, 1035, 1038, 1039, 1044,
                               1045, 1053, 1055, 1049, 1060, 1024})
            EXPECT_EQ(Collation::find(version, orderOf(lcid)), nullptr) << lcid;
    // A language that is known, by newer weights, and as in a telephone book.
    EXPECT_EQ(Collation::find(Version::jet4, {1046, 1, 1252}), nullptr);
    EXPECT_EQ(Collation::find(Version::jet4, {1031, 0, 1252, 1}), nullptr);
    EXPECT_EQ(Collation::find(Version::jet3, {1046, 0, 1250}), nullptr);
}

TEST(Jet4Keys, OfTextsFromRealFiles) {
    EXPECT_EQ(key4(u"Beverages"), "4c517151694a55516b0100");
    EXPECT_EQ(key4(u"Frankfurt a.M. "), "53694a625c536f696d074a1c601c0100");
    EXPECT_EQ(key4(u"México D.F."), "605175594d64074f1c531c01020e00");
    EXPECT_EQ(key4(u"G'day, Mate"), "554f4a761a07604a6d5101010101800b068000");
    EXPECT_EQ(key4(u"HILARIÓN-Abastos"),
              "57595e4a695964624a4c4a6b6d646b010202020202020e01010180270682"
              "00");
    EXPECT_EQ(key4(u"Heli Süßwaren GmbH & Co. KG"),
              "57515e59076b6f6b6b734a6951620755604c570712074d641c075c55010202020202021300");
    EXPECT_EQ(key4(u""), "0100");
}

TEST(Jet4Keys, OfMarksKanaAndSurrogates) {
    EXPECT_EQ(key4(u"e\u0301"), key4(u"é")); // a mark adds to the accent it follows
    EXPECT_EQ(key4(u"\u0301e"), "51010c00");
    EXPECT_EQ(key4(u"\u0301-").substr(4), key4(u"-").substr(2)); // the hyphen comes first of all
    EXPECT_EQ(key4(u"e" + std::u16string(64, u'\u0301')), key4(u"e")); // they add up to no accent
    EXPECT_EQ(key4(u"\U00010000"), "b002b4f8013f3f00");
    EXPECT_EQ(key4(u"\xD800"), "b002013f00");
    EXPECT_EQ(key4(u"\xDC08\xDFFF"), "b502b8ff013f3f00");
    EXPECT_EQ(key4(u"\xDC07\xDD05\xDD06\xDE03\xDE04\xDF01\xDF02"),
              "b4ffb5ffb602b6ffb702b7ffb802013f3f3f3f3f3f3f00");
    // Small and large kana differ behind the accents only.
    EXPECT_EQ(key4(u"\u30A1").substr(4), "010101a0ff0280ff8000");
    EXPECT_EQ(key4(u"\u30A2").substr(4), "010101ff0280ff8000");
    EXPECT_EQ(key4(u"\u30A2-").substr(4), "010101ff0280ff80ff01800b068200");
    EXPECT_EQ(key4(u"\u30A1").substr(0, 4), key4(u"\u30A2").substr(0, 4));
}

TEST(Jet4Keys, IgnoreUnitsWithoutWeight) {
    EXPECT_EQ(key4(std::u16string_view(u"a\0b", 3)), key4(u"ab"));
    EXPECT_EQ(key4(u"a\u0378b"), key4(u"ab"));
}

TEST(Jet3Keys, OfTextsFromRealFiles) {
    EXPECT_EQ(key3(u"AAA-\u00C1"), "6060601e60022240");
    EXPECT_EQ(key3(u"aa"), "606000");
    EXPECT_EQ(key3(u"05432-043"), "565b5a59581e565a5900");
    EXPECT_EQ(key3(u"a\u0081"), "601000");
    EXPECT_EQ(key3(u""), "00");
}

TEST(Keys, LookAt255CharactersAndNotAtTrailingBlanks) {
    for (const Version version : kVersions) {
        const std::u16string full(255, u'x');
        EXPECT_EQ(key(version, full + u"y"), key(version, full));
        EXPECT_NE(key(version, full.substr(1)), key(version, full));
        const std::u16string blanks = u"ab" + std::u16string(253, u' ') + u"c";
        EXPECT_EQ(key(version, blanks), key(version, u"ab")); // the c is beyond, then blanks go
        EXPECT_EQ(key(version, u"ab  "), key(version, u"ab"));
        EXPECT_NE(key(version, u"  ab"), key(version, u"ab"));
        EXPECT_EQ(key(version, u"  "), key(version, u""));
        EXPECT_NE(key(version, u"ab\t"), key(version, u"ab"));
    }
}

TEST(Comparison, IgnoresCaseAndRespectsAccents) {
    for (const Version version : kVersions) {
        EXPECT_EQ(compare(version, "Banco do Brasil", "BANCO DO BRASIL"), 0);
        EXPECT_EQ(compare(version, "JOSÉ", "josé"), 0);
        EXPECT_LT(compare(version, "jose", "josé"), 0);
        EXPECT_LT(compare(version, "josé", "josefa"), 0); // the letters come first
        EXPECT_LT(compare(version, "São Paulo", "Sapo"), 0);
        EXPECT_GT(compare(version, "b", "a"), 0);
        EXPECT_LT(compare(version, "9", "a"), 0);
        EXPECT_LT(compare(version, "10", "9"), 0);
        EXPECT_LT(compare(version, "", "a"), 0);
        EXPECT_EQ(compare(version, "", ""), 0);
        EXPECT_NE(compare(version, "dagua", "d'agua"), 0);
        EXPECT_NE(compare(version, "beijaflor", "beija-flor"), 0);
        EXPECT_LT(compare(version, "d'agua", "D'ÁGUA"), 0);
    }
    EXPECT_LT(compare(Version::jet4, "co-op", "coop a"), 0); // hyphens count last of all
}

TEST(Comparison, CountsTrailingBlanks) {
    for (const Version version : kVersions) {
        EXPECT_LT(compare(version, "ana", "ana "), 0);
        EXPECT_LT(compare(version, "ana ", "ANA  "), 0);
        EXPECT_EQ(compare(version, "ana ", "ANA "), 0);
        EXPECT_LT(compare(version, "ana  ", "ana b"), 0);
        EXPECT_LT(compare(version, "é", "É "), 0);
        EXPECT_LT(compare(version, "é", "é "), 0);
        EXPECT_LT(compare(version, "", " "), 0);
        EXPECT_LT(compare(version, "ana ", "aná"), 0);
    }
}

TEST(Comparison, LooksBeyondWhatAKeyDoes) {
    const std::string base(300, 'x');
    for (const Version version : kVersions) {
        EXPECT_LT(compare(version, base + "a", base + "b"), 0);
        EXPECT_LT(compare(version, base + "a", base + "á"), 0);
        EXPECT_LT(compare(version, base, base + "a"), 0);
    }
}

TEST(Comparison, ExpandsLetters) {
    EXPECT_EQ(compare(Version::jet4, "Süß", "SÜSS"), 0);
    EXPECT_LT(compare(Version::jet4, "ß", "st"), 0);
    EXPECT_LT(compare(Version::jet4, "sa", "ß"), 0);
    EXPECT_EQ(compare(Version::jet4, "æ", "ae"), 0);
}

TEST(Comparison, TakesAnyText) {
    EXPECT_LT(compare(Version::jet3, "z", "Ω"), 0); // not in a Jet 3 file, but in a query
    EXPECT_LT(compare(Version::jet3, "Ω", "中"), 0);
    EXPECT_LT(compare(Version::jet3, "中", "😀"), 0);
    EXPECT_EQ(compare(Version::jet4, "😀", "😀"), 0);
    EXPECT_NE(compare(Version::jet4, "😀", "😁"), 0);
    for (const Version version : kVersions) {
        EXPECT_NE(compare(version, "\xFF", ""), 0);
        EXPECT_EQ(compare(version, "a\xC3", "A\xC3"), 0);
        EXPECT_EQ(compare(version, "a\xE2\x82", "b"), -compare(version, "b", "a\xE2\x82"));
    }
}

/// Texts that meet in many ways: few different characters, short.
class Texts {
public:
    Texts(unsigned seed, std::u16string alphabet) : random_(seed), alphabet_(std::move(alphabet)) {}
    std::u16string next() {
        std::u16string text;
        for (std::size_t left = random_() % 7; left > 0; --left)
            text += alphabet_[random_() % alphabet_.size()];
        while (!text.empty() && text.back() == u' ')
            text.pop_back();
        return text;
    }

private:
    std::mt19937 random_;
    std::u16string alphabet_;
};

TEST(Comparison, AgreesWithTheKeysOfJet4) {
    const TextCodec codec(Version::jet4);
    const std::u16string alphabets[] = {u"aAáâbcsS' -.1",
                                        u"sßeéæœaëdǅǄ'-",
                                        u"aeé\u0301\u0303\u0001\u0002-' ",
                                        u"アァあｱかがガ-a",
                                        u"a\xD83D\xDE00\xD801\xDC01\uB100é",
                                        u"中文ab한ГгÑñ\u0378"};
    for (unsigned i = 0; i < std::size(alphabets); ++i) {
        Texts texts(i, alphabets[i]);
        for (int round = 0; round < 40000; ++round) {
            const std::u16string a = texts.next();
            const std::u16string b = texts.next();
            const auto utf8 = [&](std::u16string_view units) {
                return codec.decode(std::as_bytes(std::span(units)));
            };
            const Bytes keyA = key(Version::jet4, a);
            const Bytes keyB = key(Version::jet4, b);
            const int expected = keyA < keyB ? -1 : int{keyB < keyA};
            ASSERT_EQ(sign(compare(Version::jet4, utf8(a), utf8(b))), expected)
                << i << ": " << utf8(a) << " | " << utf8(b);
        }
    }
}

TEST(Comparison, AgreesWithTheKeysOfJet3) {
    const TextCodec codec(Version::jet3);
    std::u16string all;
    for (unsigned i = 0; i <= 0xFF; ++i)
        all += static_cast<char16_t>(i);
    const std::u16string alphabets[] = {all, u"aAáâbcsS' -.1", u"sßeéæa\u0081\u009C"};
    for (unsigned i = 0; i < std::size(alphabets); ++i) {
        Texts texts(i, alphabets[i]);
        for (int round = 0; round < 40000; ++round) {
            const std::u16string a = texts.next();
            const std::u16string b = texts.next();
            const auto utf8 = [&](std::u16string_view units) {
                Bytes bytes;
                for (const char16_t unit : units)
                    bytes.push_back(static_cast<std::byte>(unit));
                return codec.decode(bytes);
            };
            const Bytes keyA = key(Version::jet3, a);
            const Bytes keyB = key(Version::jet3, b);
            const int expected = keyA < keyB ? -1 : int{keyB < keyA};
            ASSERT_EQ(sign(compare(Version::jet3, utf8(a), utf8(b))), expected)
                << i << ": " << utf8(a) << " | " << utf8(b);
        }
    }
}

} // namespace
} // namespace jet
