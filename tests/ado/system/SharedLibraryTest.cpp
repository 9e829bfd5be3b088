#include "ado/system/SharedLibrary.h"

#include <gtest/gtest.h>

namespace {

TEST(SharedLibrary, IsLoadedWhenItIsAskedFor) {
    const auto absolute = reinterpret_cast<double (*)(double)>(ado::symbolIn("m", 6, "fabs"));
    ASSERT_NE(absolute, nullptr);
    EXPECT_EQ(absolute(-27), 27);
}

TEST(SharedLibrary, ThatIsMissingHasNothing) {
    EXPECT_EQ(ado::symbolIn("de-nenhum-sistema", 1, "fabs"), nullptr);
    EXPECT_EQ(ado::symbolIn("m", 1006, "fabs"), nullptr);
    EXPECT_EQ(ado::symbolIn("m", 6, "de_nenhuma_biblioteca"), nullptr);
}

} // namespace
