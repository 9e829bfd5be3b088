#include "jet/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

using namespace jet;

TEST(Numbers, ASingleIsReadAsItWasWritten) {
    for (const double written : {436.88, 0.1, -1234.5, 1e-30, 3.4e38, 0.0, 16777216.0})
        EXPECT_EQ(asWritten(static_cast<float>(written)), written);
    EXPECT_EQ(asWritten(std::numeric_limits<float>::infinity()),
              std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(asWritten(std::numeric_limits<float>::quiet_NaN())));
}

TEST(Numbers, DecimalsAreMadeOfUpTo28Digits) {
    const struct {
        bool negative;
        const char* digits;
        std::uint8_t scale;
        const char* text; ///< null if there are too many
    } cases[] = {
        {false, "1250",                             2,  "12.50"                          },
        {true,  "1250",                             4,  "-0.1250"                        },
        {true,  "000",                              2,  "0.00"                           },
        {false, "",                                 0,  "0"                              },
        {false, "4294967296",                       0,  "4294967296"                     },
        {true,  "9999999999999999999999999999",     28, "-0.9999999999999999999999999999"},
        {false, "00009999999999999999999999999999", 0,  "9999999999999999999999999999"   },
        {false, "10000000000000000000000000000",    0,  nullptr                          },
    };
    for (const auto& [negative, digits, scale, text] : cases) {
        const auto number = numericFrom(negative, digits, scale);
        ASSERT_EQ(number.has_value(), text != nullptr) << digits;
        if (number) {
            EXPECT_EQ(number->text(), text);
            EXPECT_EQ(number->scale, scale);
        }
    }
    EXPECT_FALSE(numericFrom(true, "0", 0)->negative);
}
