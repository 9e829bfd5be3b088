// The bytes of the properties in which a file keeps its rules.
#include "jet/rule/Properties.h"

#include "support/FileRules.h"
#include "support/Versions.h"

#include <gtest/gtest.h>

#include <random>

using namespace jet;

namespace {

class PropertiesOf : public testing::TestWithParam<Version> {};
INSTANTIATE_TEST_SUITE_P(, PropertiesOf, bothVersions(), versionName);

TEST_P(PropertiesOf, PropertiesReadAsWritten) {
    const TextCodec codec(GetParam());
    const auto groups =
        parseProperties(propertyBytes(GetParam(),
                                      {
                                          {.column = "ação", .required = true, .rule = ">0"},
                                          {            }
    }),
                        codec, PageNo{9});
    ASSERT_EQ(groups.size(), 2U);
    EXPECT_EQ(groups[0].column, "ação");
    ASSERT_NE(groups[0].find("REQUIRED"), nullptr);
    EXPECT_TRUE(groups[0].find("Required")->yes());
    EXPECT_EQ(groups[0].find("ValidationRule")->text(codec), ">0");
    EXPECT_EQ(groups[0].find("Caption"), nullptr);
    EXPECT_EQ(groups[1].column, "");
    EXPECT_TRUE(groups[1].properties.empty());
    EXPECT_TRUE(parseProperties({}, codec, PageNo{9}).empty());
}

TEST_P(PropertiesOf, APropertyWithoutANameIsDamage) {
    Bytes bytes = propertyBytes(GetParam(), {
                                                {.column = "nome", .rule = "<>''"}
    });
    constexpr std::ptrdiff_t kMark = 4; // the names' block follows, with its own length
    bytes.erase(bytes.begin() + kMark,
                bytes.begin() + kMark + load<std::int32_t>(bytes.data() + kMark));
    try {
        (void)parseProperties(bytes, TextCodec(GetParam()), PageNo{9});
        ADD_FAILURE();
    } catch (const Error& error) {
        EXPECT_EQ(error.code(), Errc::corrupt);
    }
}

TEST_P(PropertiesOf, DamagedPropertiesNeverDoMoreThanFail) {
    const TextCodec codec(GetParam());
    const Bytes sound = propertyBytes(
        GetParam(), {
                        {.column = "nome", .required = true, .defaultValue = "'x'", .rule = "<>''"},
                        {.rule = "[nome]>'a'",  .message = "não"                 }
    });
    const auto parses = [&](const Bytes& bytes) {
        try {
            (void)parseProperties(bytes, codec, PageNo{9});
            return true;
        } catch (const Error& error) {
            EXPECT_EQ(error.code(), Errc::corrupt);
            return false;
        }
    };
    EXPECT_TRUE(parses(sound));
    std::size_t refused = 0;
    for (std::size_t size = 1; size < sound.size(); ++size)
        refused +=
            parses({sound.begin(), sound.begin() + static_cast<std::ptrdiff_t>(size)}) ? 0 : 1;
    EXPECT_GT(refused, sound.size() - 6) << "only at the borders of blocks";
    std::mt19937 random(3);
    for (int i = 0; i < 20'000; ++i) {
        Bytes bytes = sound;
        for (auto flips = 1 + random() % 3; flips > 0; --flips)
            bytes[random() % bytes.size()] = static_cast<std::byte>(random() & 0xFF);
        (void)parses(bytes);
    }
}

} // namespace
