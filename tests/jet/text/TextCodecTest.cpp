#include "jet/text/TextCodec.h"

#include "jet/Sentences.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <random>
#include <set>

namespace jet {
namespace {

using testing::HasSubstr;

constexpr std::uint16_t kSingleBytePages[] = {874,  1250, 1251, 1252, 1253,
                                              1254, 1255, 1256, 1257, 1258};
constexpr std::uint16_t kDoubleBytePages[] = {932, 936, 949, 950};

Bytes bytes(std::initializer_list<unsigned> values) {
    Bytes result;
    for (const unsigned value : values)
        result.push_back(static_cast<std::byte>(value));
    return result;
}

std::string decoded(std::uint16_t page, std::initializer_list<unsigned> values) {
    return TextCodec(Version::jet3, page).decode(bytes(values));
}

const TextCodec kJet3(Version::jet3);
const TextCodec kJet4(Version::jet4);

TEST(CodePages, EveryByteOfASingleBytePageComesBackAndIsACharacterOfItsOwn) {
    for (const std::uint16_t page : kSingleBytePages) {
        const TextCodec codec(Version::jet3, page);
        std::set<std::string> characters;
        for (unsigned i = 0; i <= 0xFF; ++i) {
            const Bytes stored = bytes({i});
            const std::string text = codec.decode(stored);
            EXPECT_EQ(codec.encode(text, false, false), stored) << page << " " << i;
            EXPECT_EQ(codec.characters(text), 1U) << page << " " << i;
            characters.insert(text);
        }
        EXPECT_EQ(characters.size(), 256U) << page;
    }
}

TEST(CodePages, EveryByteOfADoubleBytePageComesBackAlone) {
    for (const std::uint16_t page : kDoubleBytePages) {
        const TextCodec codec(Version::jet3, page);
        for (unsigned i = 0; i <= 0xFF; ++i) {
            const Bytes stored = bytes({i});
            EXPECT_EQ(codec.encode(codec.decode(stored), false, false), stored) << page << " " << i;
        }
    }
}

TEST(CodePages, EveryTwoBytesOfADoubleBytePageKeepTheirText) {
    for (const std::uint16_t page : kDoubleBytePages) {
        const TextCodec codec(Version::jet3, page);
        int pairs = 0;
        int changed = 0;
        for (unsigned i = 0; i <= 0xFFFF; ++i) {
            const Bytes stored = bytes({i >> 8, i & 0xFF});
            const std::string text = codec.decode(stored);
            const Bytes again = codec.encode(text, false, false);
            pairs += codec.characters(text) == 2 && text.size() == 3;
            changed += again != stored;
            ASSERT_EQ(again.size(), 2U) << page << " " << i;
            ASSERT_EQ(codec.decode(again), text) << page << " " << i;
        }
        EXPECT_GT(pairs, 7000) << page;
        EXPECT_LT(changed, 500) << page; // characters that the page has twice
    }
}

TEST(CodePages, MeanWhatTheyMean) {
    EXPECT_EQ(decoded(1252, {0x80, 0xC7, 0xE3, 0x6F}), "€Ção");
    EXPECT_EQ(decoded(0, {0xE9}), "é");
    EXPECT_EQ(decoded(1250, {0xB9}), "ą");
    EXPECT_EQ(decoded(1251, {0xC0, 0xE1}), "Аб");
    EXPECT_EQ(decoded(1253, {0xE1}), "α");
    EXPECT_EQ(decoded(1254, {0xDD}), "İ");
    EXPECT_EQ(decoded(1255, {0xE0}), "א");
    EXPECT_EQ(decoded(1256, {0xC7}), "ا");
    EXPECT_EQ(decoded(1257, {0xFE}), "ž");
    EXPECT_EQ(decoded(1258, {0xFE}), "₫");
    EXPECT_EQ(decoded(874, {0xA1}), "ก");
    EXPECT_EQ(decoded(932, {0x93, 0xFA, 0x96, 0x7B, 0xB1, 0x41}), "日本ｱA");
    EXPECT_EQ(decoded(936, {0xD6, 0xD0, 0xCE, 0xC4}), "中文");
    EXPECT_EQ(decoded(949, {0xC7, 0xD1, 0xB1, 0xDB}), "한글");
    EXPECT_EQ(decoded(950, {0xA4, 0xA4, 0xA4, 0xE5}), "中文");
}

TEST(CodePages, UndefinedBytesHaveAPlaceOfTheirOwn) {
    EXPECT_EQ(decoded(1252, {0x81, 0x8D, 0x8F, 0x90, 0x9D}), "\u0081\u008D\u008F\u0090\u009D");
    EXPECT_EQ(decoded(1253, {0xAA}), "\uF7AA");
    EXPECT_EQ(decoded(932, {0x93, 0x20}), "\uF793 "); // the first of two, and no second
    EXPECT_EQ(decoded(932, {0x41, 0x93}), "A\uF793");
}

TEST(CodePages, CharactersWithTwoPlacesGoToTheUsualOne) {
    const TextCodec codec(Version::jet3, 932);
    EXPECT_EQ(codec.decode(bytes({0x81, 0xCA})), codec.decode(bytes({0xFA, 0x54})));
    EXPECT_EQ(codec.encode(codec.decode(bytes({0xFA, 0x54})), false, false), bytes({0x81, 0xCA}));
    EXPECT_EQ(codec.encode("纊", false, false), bytes({0xFA, 0x5C})) << "not the first, 0xED40";
}

TEST(CodePages, WidthCountsBytes) {
    EXPECT_EQ(TextCodec(Version::jet3, 932).characters("日本a"), 5U);
    EXPECT_EQ(kJet3.characters("ação"), 4U);
}

TEST(CodePages, RefuseWhatTheyLackAndNameIt) {
    const std::string sentence =
        sentenceOf([] { (void)kJet3.encode("preço Ω", false, false); }, Errc::outOfRange);
    EXPECT_THAT(sentence, HasSubstr("\"Ω\" (U+03A9)"));
    EXPECT_THAT(sentence, HasSubstr("1252"));
    EXPECT_EQ(errorOf([] { (void)kJet3.encode("😀", false, false); }), Errc::outOfRange);
    EXPECT_EQ(errorOf([] { (void)kJet3.characters("Ω"); }), Errc::outOfRange);
}

TEST(CodePages, UnknownOnesAreRefused) {
    for (const int page : {1, 437, 1200, 1259, 65001})
        EXPECT_EQ(errorOf([&] { TextCodec(Version::jet3, static_cast<std::uint16_t>(page)); }),
                  Errc::unsupported);
    EXPECT_NO_THROW(TextCodec(Version::jet4, 437)); // means nothing there
}

TEST(Jet4Text, IsPlainUnlessTheColumnMayCompress) {
    EXPECT_EQ(kJet4.encode("aé€", false, false), bytes({0x61, 0, 0xE9, 0, 0xAC, 0x20}));
    EXPECT_EQ(kJet4.encode("abé", true, false), bytes({0xFF, 0xFE, 0x61, 0x62, 0xE9}));
    EXPECT_EQ(kJet4.encode("abé", false, false), bytes({0x61, 0, 0x62, 0, 0xE9, 0}));
    EXPECT_EQ(kJet4.encode("ab", true, false), bytes({0x61, 0, 0x62, 0}));
    EXPECT_EQ(kJet4.encode("ab€", true, false), bytes({0x61, 0, 0x62, 0, 0xAC, 0x20}));
    EXPECT_EQ(kJet4.encode(std::string_view("ab\0", 3), true, false),
              bytes({0x61, 0, 0x62, 0, 0, 0}));
    EXPECT_EQ(kJet4.encode("", true, false), Bytes{});
}

TEST(Jet4Text, LongMemosStayPlain) {
    EXPECT_EQ(kJet4.encode(std::string(1024, 'x'), true, true).size(), 1026U);
    EXPECT_EQ(kJet4.encode(std::string(1025, 'x'), true, true).size(), 2050U);
    EXPECT_EQ(kJet4.encode(std::string(1025, 'x'), true, false).size(), 1027U);
}

TEST(Jet4Text, ReadsPlainAndCompressed) {
    EXPECT_EQ(kJet4.decode({}), "");
    EXPECT_EQ(kJet4.decode(bytes({0x61, 0, 0xE9, 0, 0xAC, 0x20})), "aé€");
    EXPECT_EQ(kJet4.decode(bytes({0xFF, 0xFE})), "");
    EXPECT_EQ(kJet4.decode(bytes({0xFF, 0xFE, 0x61, 0xE9})), "aé");
    EXPECT_EQ(kJet4.decode(bytes({0xFF, 0xFE, 0x61, 0x62})), "ab");
    EXPECT_EQ(kJet4.decode(bytes({0x61, 0, 0, 0, 0x62, 0})), std::string("a\0b", 3));
}

TEST(Jet4Text, ZeroSwitchesCompressionOffAndOn) {
    EXPECT_EQ(kJet4.decode(bytes({0xFF, 0xFE, 0x61, 0x00, 0xAC, 0x20, 0x61, 0x00, 0x00, 0x62})),
              "a€ab");
    EXPECT_EQ(kJet4.decode(bytes({0xFF, 0xFE, 0x00, 0xAC, 0x20})), "€");
    EXPECT_EQ(kJet4.decode(bytes({0xFF, 0xFE, 0x61, 0x00})), "a");
}

TEST(Jet4Text, ThatEndsInsideACharacterIsDamaged) {
    for (const Bytes& stored : {bytes({0x61}), bytes({0xFF}), bytes({0x61, 0, 0x62}),
                                bytes({0xFF, 0xFE, 0x61, 0x00, 0xAC})})
        EXPECT_EQ(errorOf([&] { (void)kJet4.decode(stored); }), Errc::corrupt);
}

TEST(Jet4Text, PairsOfSurrogatesAreOneCharacterAndLoneOnesSurvive) {
    EXPECT_EQ(kJet4.decode(bytes({0x3D, 0xD8, 0x00, 0xDE})), "😀");
    EXPECT_EQ(kJet4.encode("😀", true, false), bytes({0x3D, 0xD8, 0x00, 0xDE}));
    EXPECT_EQ(kJet4.characters("a😀"), 3U);
    const Bytes lone[] = {bytes({0x3D, 0xD8}),
                          bytes({0x3D, 0xD8, 0x61, 0x00}),
                          bytes({0x00, 0xDE}),
                          bytes({0x00, 0xDE, 0x3D, 0xD8}),
                          bytes({0x3D, 0xD8, 0x3D, 0xD8, 0x00, 0xDE}),
                          bytes({0x3D, 0xD8, 0x3D, 0xD8})};
    for (const Bytes& stored : lone)
        EXPECT_EQ(kJet4.encode(kJet4.decode(stored), true, false), stored);
}

TEST(Jet4Text, AnyUnitsComeBack) {
    std::mt19937 random(4);
    std::uniform_int_distribution<unsigned> byte(0, 0xFF);
    const auto anyUnit = [&] { return byte(random) << 8 | byte(random); };
    const auto surrogate = [&] { return 0xD800 | (anyUnit() & 0x7FF); };
    const auto latin = [&] { return 1 + byte(random) % 0xFF; };
    for (int round = 0; round < 20000; ++round) {
        Bytes plain;
        for (unsigned i = 0; i < 1 + byte(random) % 12; ++i) {
            const unsigned unit = round % 3 == 0   ? anyUnit()
                                  : round % 3 == 1 ? surrogate()
                                                   : latin();
            plain.push_back(static_cast<std::byte>(unit));
            plain.push_back(static_cast<std::byte>(unit >> 8));
        }
        if (plain[0] == std::byte{0xFF} && plain[1] == std::byte{0xFE})
            continue;
        const std::string text = kJet4.decode(plain);
        ASSERT_EQ(kJet4.encode(text, false, false), plain);
        ASSERT_EQ(kJet4.decode(kJet4.encode(text, true, false)), text);
        ASSERT_EQ(kJet4.characters(text), plain.size() / 2);
    }
}

TEST(Jet4Text, RefusesTheMarkOfCompressionAsFirstCharacter) {
    EXPECT_EQ(errorOf([] { (void)kJet4.encode("\uFEFFabc", true, false); }), Errc::outOfRange);
    EXPECT_NO_THROW((void)kJet4.encode("a\uFEFF", true, false));
}

TEST(Text, ThatIsNotUtf8IsRefused) {
    const std::string_view wrong[] = {"\x80",
                                      "a\xC3",
                                      "\xC0\x80",
                                      "\xE0\x80\x80",
                                      "\xF0\x80\x80\x80",
                                      "\xF4\x90\x80\x80",
                                      "\xFF",
                                      "\xE2\x82",
                                      "\xC3(",
                                      "\xF8\x88\x80\x80\x80"};
    for (const std::string_view text : wrong) {
        EXPECT_EQ(errorOf([&] { (void)kJet4.encode(text, false, false); }), Errc::outOfRange);
        EXPECT_EQ(errorOf([&] { (void)kJet3.characters(text); }), Errc::outOfRange);
    }
}

TEST(Text, DecodesIntoAStringThatHeldAnother) {
    std::string text = "um texto anterior mais longo";
    kJet4.decodeTo(text, bytes({0xFF, 0xFE, 0x61, 0xE9}));
    EXPECT_EQ(text, "aé");
    kJet4.decodeTo(text, bytes({0x62, 0}));
    EXPECT_EQ(text, "b");
    kJet3.decodeTo(text, bytes({0xE9}));
    EXPECT_EQ(text, "é");
    kJet3.decodeTo(text, {});
    EXPECT_EQ(text, "");
}

TEST(Text, GivesItsFirstUnitsToKeys) {
    std::array<char16_t, 3> units{};
    const auto given = [&](std::size_t count) { return std::u16string(units.data(), count); };
    EXPECT_EQ(given(kJet4.unitsOf(std::string_view("a😀b"), units)), u"a😀");
    EXPECT_EQ(given(kJet4.unitsOf(std::string_view("é"), units)), u"é");
    EXPECT_EQ(given(kJet4.unitsOf(bytes({0xFF, 0xFE, 0x61, 0xE9, 0x62, 0x63}), units)), u"aéb");
    EXPECT_EQ(given(kJet4.unitsOf(bytes({0xAC, 0x20}), units)), u"€");
    EXPECT_EQ(given(kJet3.unitsOf(std::string_view("€abc"), units)), u"\u0080ab");
    EXPECT_EQ(given(kJet3.unitsOf(bytes({0x80, 0x61}), units)), u"\u0080a");
    // As many as there is room for, wherever that ends.
    EXPECT_EQ(given(kJet4.unitsOf(std::string_view("ab😀"), units)), u"ab\xD83D");
    EXPECT_EQ(given(kJet4.unitsOf(std::string_view("abc😀"), units)), u"abc");
    EXPECT_EQ(given(kJet4.unitsOf(bytes({0x61, 0, 0x62, 0, 0x63, 0, 0x64, 0}), units)), u"abc");
    EXPECT_EQ(
        given(kJet4.unitsOf(bytes({0xFF, 0xFE, 0, 0x61, 0, 0x62, 0, 0x63, 0, 0x64, 0}), units)),
        u"abc");
    const TextCodec japanese(Version::jet3, 932);
    EXPECT_EQ(given(japanese.unitsOf(std::string_view("abcあ"), units)), u"abc");
}

} // namespace
} // namespace jet
