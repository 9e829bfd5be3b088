// Who has a file open, asked from outside.
#include "jet/Stations.h"

#include "jet/Database.h"
#include "jet/Sentences.h"
#include "support/TemporaryFolder.h"
#include "support/Versions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace jet;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class StationsInFile : public testing::TestWithParam<Version> {
protected:
    void SetUp() override { Database::create(file(), GetParam()); }
    [[nodiscard]] std::filesystem::path file() const { return folder_ / "automacao.mdb"; }
    [[nodiscard]] std::filesystem::path lockFile() const { return folder_ / "automacao.ldb"; }

private:
    TemporaryFolder folder_;
};

INSTANTIATE_TEST_SUITE_P(, StationsInFile, bothVersions(), versionName);

TEST_P(StationsInFile, AreThoseThatHaveItOpenAndNoOthers) {
    EXPECT_THAT(stationsIn(file()), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(lockFile()));
    {
        const Database one(file());
        const std::vector<std::string> names = stationsIn(file());
        ASSERT_THAT(names, SizeIs(1));
        EXPECT_FALSE(names.front().empty());
        {
            const Database two(file());
            EXPECT_THAT(stationsIn(file()), SizeIs(2));
        }
        EXPECT_EQ(stationsIn(file()), names);
    }
    EXPECT_THAT(stationsIn(file()), IsEmpty());
}

TEST_P(StationsInFile, CantBeToldWhereAFolderHasTheLockFilesName) {
    std::filesystem::create_directory(lockFile());
    const Errc code = errorOf([&] { static_cast<void>(stationsIn(file())); });
    EXPECT_TRUE(code == Errc::readOnly || code == Errc::io);
    EXPECT_TRUE(std::filesystem::is_directory(lockFile()));
}

} // namespace
