// Whatever bytes a file has, reading it ends: with rows, or with an error that says what is wrong.
// Meant for the build with the sanitizers, which see every access out of bounds.
#include "jet/Check.h"
#include "jet/PatientFile.h"
#include "support/TemporaryFolder.h"
#include "support/Versions.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <random>

using namespace jet;

namespace {

class Corruption : public testing::TestWithParam<Version> {
protected:
    Corruption() {
        Database::create(path_, GetParam());
        {
            Database database(path_);
            rows_ = makePatient(database);
        }
        std::ifstream file(path_, std::ios::binary);
        sound_.assign(std::istreambuf_iterator<char>(file), {});
    }

    /// Writes `bytes` and does everything with them that only reads.
    void read(const std::string& bytes) {
        {
            std::ofstream file(path_, std::ios::binary);
            file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        }
        EXPECT_NO_THROW(tolerant([&] {
            Database::Options options;
            options.readOnly = true;
            Database database(path_, options);
            readEverything(database, rows_);
        }));
        try {
            (void)check(path_);
        } catch (const Error& error) {
            ADD_FAILURE() << "check() must tell and not throw: " << error.what();
        }
    }

    std::string sound_; ///< the file's bytes
    std::mt19937 random_{42};

private:
    TemporaryFolder folder_;
    std::filesystem::path path_ = folder_ / "paciente.mdb";
    std::vector<RowId> rows_;
};

INSTANTIATE_TEST_SUITE_P(, Corruption, bothVersions(), versionName);

TEST_P(Corruption, TheSoundFileReadsWhole) {
    read(sound_);
    EXPECT_FALSE(sound_.empty());
}

/// Every byte takes minutes: that is for who sets VALTRINO_THOROUGH. Otherwise each seventh; as the
/// file's structures repeat, every field of every kind of page has its turn.
TEST_P(Corruption, AnyByteMayBeWrong) {
    const std::size_t step = std::getenv("VALTRINO_THOROUGH") != nullptr ? 1 : 7 * JET_ONE_IN;
    std::size_t turn = 0;
    for (std::size_t at = 2; at < sound_.size(); ++at) {
        // Of runs of the same byte, or the same character of two bytes, few are tried.
        if ((sound_[at] == sound_[at - 2] && at % 61 != 0) || ++turn % step != 0)
            continue;
        SCOPED_TRACE("byte " + std::to_string(at));
        std::string bytes = sound_;
        const unsigned wrong = turn / step % 2 == 0 ? 0xFFU : 1U << (random_() % 8);
        bytes[at] = static_cast<char>(static_cast<unsigned char>(bytes[at]) ^ wrong);
        read(bytes);
    }
}

TEST_P(Corruption, TheFileMayEndAnywhere) {
    for (std::size_t size = 0; size < sound_.size(); size += size < 300 ? 29 : 1021) {
        SCOPED_TRACE("size " + std::to_string(size));
        read(sound_.substr(0, size));
    }
    const std::size_t page = formatOf(GetParam()).pageSize;
    for (std::size_t size = page; size < sound_.size(); size += page) {
        SCOPED_TRACE("size " + std::to_string(size));
        read(sound_.substr(0, size));
    }
}

TEST_P(Corruption, WholePagesMayBeAnything) {
    const std::size_t page = formatOf(GetParam()).pageSize;
    for (int round = 0; round < 100; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        std::string bytes = sound_;
        const std::size_t at = (1 + random_() % (bytes.size() / page - 1)) * page;
        switch (round % 4) {
        case 0: // noise behind the header of the page
            for (std::size_t i = at + 16; i < at + page; ++i)
                bytes[i] = static_cast<char>(random_());
            break;
        case 1: // another page
            bytes.replace(at, page, sound_, random_() % (bytes.size() / page) * page, page);
            break;
        case 2: // zeros
            bytes.replace(at, page, page, '\0');
            break;
        default: // many small errors anywhere but in the file's header
            for (int i = 0; i < 200; ++i)
                bytes[page + random_() % (bytes.size() - page)] = static_cast<char>(random_());
        }
        read(bytes);
    }
}

} // namespace
