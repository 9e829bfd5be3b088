#include "cheques/Cmc7.h"

#include <gtest/gtest.h>

namespace {

// As printed on cheques of six accounts.
constexpr const char* kLinhas[] = {
    "341378140090004285081430432989", "001347740188505735511011535959",
    "070006790187002605206700864017", "756423870330001855900052800109",
    "070001170180001505001100799574", "070001120180008415001100799574",
};

TEST(LineOfACheque, TellsBankBranchAndNumber) {
    const auto read = Cmc7::ler(kLinhas[0]);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->banco, 341);
    EXPECT_EQ(read->agencia, "3781");
    EXPECT_EQ(read->numero, "000428");
    EXPECT_EQ(Cmc7::ler(kLinhas[1])->banco, 1);
}

TEST(LineOfACheque, IsRefusedIfAnyDigitIsAnother) {
    for (const QString line : kLinhas) {
        ASSERT_TRUE(Cmc7::ler(line)) << line.toStdString();
        for (qsizetype i = 0; i < line.size(); ++i)
            for (const QChar other : QString("0123456789?")) {
                QString changed = line;
                changed[i] = other;
                EXPECT_EQ(Cmc7::ler(changed).has_value(), other == line[i])
                    << changed.toStdString();
            }
    }
}

TEST(LineOfACheque, HasThirtyDigits) {
    EXPECT_FALSE(Cmc7::ler(""));
    EXPECT_FALSE(Cmc7::ler(QString(kLinhas[0]).chopped(1)));
    EXPECT_FALSE(Cmc7::ler(QString(kLinhas[0]) + "0"));
    EXPECT_FALSE(Cmc7::ler(QString::fromUtf8("٠٠٠٠٠٠٠٠٠٠٠٠٠٠٠٠٠٠٠٠٠٠٠٠٠٠٠٠٠٠")));
}

TEST(NumberOfACheque, IsTheSameWithZerosBefore) {
    for (const auto& [number, same] : {
             std::pair{"000428", "428"},
             {"428",    "428"},
             {"000",    "0"  },
             {"",       ""   },
             {"00A0",   "A0" }
    })
        EXPECT_EQ(Cmc7::semZeros(number), same);
}

} // namespace
