// Salvage from damage of any kind: it ends, with a sound file or a sentence.
#include "jet/Copies.h"
#include "jet/DamagedFile.h"
#include "jet/PatientFile.h"
#include "jet/ShopWork.h"
#include "jet/copy/SalvageFile.h"
#include "jet/page/Header.h"
#include "support/Versions.h"

#include <algorithm>
#include <cstring>
#include <random>

using namespace jet;

namespace {

class SalvageAnyDamage : public SalvageFile {};
INSTANTIATE_TEST_SUITE_P(, SalvageAnyDamage, bothVersions(), versionName);

/// Any bytes may be wrong: it ends, with a sound file or with a sentence.
TEST_P(SalvageAnyDamage, AnyDamageEnds) {
    std::mt19937 random(11);
    file_.save();
    const std::size_t size = std::filesystem::file_size(file_.path());
    const std::size_t pageSize = file_.format().pageSize;
    const auto pages = static_cast<std::uint32_t>(size / pageSize);
    for (int round = 0; round < 120; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        file_.restore();
        const PageNo page{static_cast<std::uint32_t>(random() % pages)};
        const std::span<std::byte> bytes = file_.page(page);
        switch (round % 4) {
        case 0: // another page, or the same with another's head
            std::ranges::copy(file_.page(PageNo{static_cast<std::uint32_t>(random() % pages)})
                                  .first(round % 8 == 0 ? pageSize : 32),
                              bytes.begin());
            break;
        case 1: // noise behind the head of a page
            for (std::byte& b : bytes.subspan(16))
                b = static_cast<std::byte>(random());
            break;
        case 2: // a few wrong bytes on one page
            for (int i = 0; i < 12; ++i)
                bytes[random() % pageSize] = static_cast<std::byte>(random());
            break;
        default: // wrong bytes anywhere
            for (int i = 0; i < 60; ++i)
                file_.page(
                    PageNo{static_cast<std::uint32_t>(random() % pages)})[random() % pageSize] =
                    static_cast<std::byte>(random());
        }
        file_.save();
        std::filesystem::remove(target_);
        try {
            const SalvageReport report = salvage(file_.path(), target_);
            EXPECT_TRUE(report.check.sound()) << told(report) << listed(report.check);
        } catch (const Error& error) {
            EXPECT_EQ(error.code(), Errc::unsupported) << error.what();
            EXPECT_FALSE(std::filesystem::exists(target_));
        }
    }
}

/// One blow against a file.
void damage(Bytes& file, std::size_t pageSize, std::mt19937_64& random) {
    const auto below = [&](std::size_t count) {
        return static_cast<std::size_t>(random() % count);
    };
    const auto page = [&] {
        return std::span(file).subspan(below(file.size() / pageSize) * pageSize, pageSize);
    };
    const auto any = [&] { return static_cast<std::byte>(random()); };
    const std::span<std::byte> hit = page();
    switch (below(10)) {
    case 0: // another page in its place
        std::ranges::copy(page(), hit.begin());
        break;
    case 1: // another's head
        std::ranges::copy(page().first(32), hit.begin());
        break;
    case 2: // noise behind the head
        std::generate(hit.begin() + 16, hit.end(), any);
        break;
    case 3: // a few wrong bytes on it
        for (int i = 0; i < 12; ++i)
            hit[below(pageSize)] = any();
        break;
    case 4: // wrong bytes anywhere
        for (int i = 0; i < 60; ++i)
            file[below(file.size())] = any();
        break;
    case 5: // a sector gone
        std::ranges::fill(hit.subspan(below(pageSize / 512) * 512, 512), std::byte{});
        break;
    case 6:
        std::ranges::fill(hit, std::byte{});
        break;
    case 7: // two pages in each other's places
        if (const auto other = page(); other.data() != hit.data())
            std::swap_ranges(other.begin(), other.end(), hit.begin());
        break;
    case 8: // numbers one too high or too low
        for (int i = 0; i < 4; ++i) {
            std::byte* const at = hit.data() + below(pageSize - 3);
            store<std::uint32_t>(at, load<std::uint32_t>(at) + (below(2) == 0 ? 1U : ~0U));
        }
        break;
    default: // cut
        file.resize(std::max(file.size() - below(file.size() / 4), 3 * pageSize));
    }
}

/// VALTRINO_SALVAGE_SEEDS says how many; each hits one of two files, by turns.
TEST_P(SalvageAnyDamage, WhateverIsDamagedTheNewFileIsSound) {
    const char* const asked = std::getenv("VALTRINO_SALVAGE_SEEDS");
    const int seeds = asked != nullptr ? std::stoi(asked) : 60;
    file_.save();
    const std::string first = contentOf(file_.path());
    std::vector<Bytes> sources(2);
    sources[0].resize(first.size());
    std::memcpy(sources[0].data(), first.data(), first.size());
    {
        MemoryDisk disk;
        Database::create(kPath, GetParam(), disk);
        {
            Database patient(kPath, on(disk));
            static_cast<void>(makePatient(patient));
        }
        sources[1] = disk.image().at(kPath);
    }
    int saved = 0;
    for (int seed = 0; seed < seeds; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937_64 random(static_cast<std::uint64_t>(seed));
        Bytes bytes = sources[static_cast<std::size_t>(seed) % 2];
        for (auto blows = 1 + random() % 4; blows > 0; --blows)
            damage(bytes, file_.format().pageSize, random);
        MemoryDisk disk({
            {kPath, bytes}
        });
        const std::filesystem::path target = "/loja/salvo.mdb";
        try {
            const SalvageReport report = salvage(kPath, target, {}, disk);
            EXPECT_TRUE(check(target, disk).sound()) << told(report) << listed(report.check);
            // Damage may have made a password as well; it is kept, as the shop's would be.
            Database::Options options = on(disk);
            options.password = readHeader(File(target, File::Mode::read, disk)).password;
            Database file(target, options);
            readEverything(file, {});
            ++saved;
        } catch (const Error& error) {
            EXPECT_EQ(error.code(), Errc::unsupported) << error.what();
            EXPECT_FALSE(disk.exists(target));
        }
    }
    EXPECT_GT(saved, seeds / 2);
}

} // namespace
