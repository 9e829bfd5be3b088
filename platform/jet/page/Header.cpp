#include "jet/page/Header.h"

#include "jet/text/TextCodec.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace jet {

namespace {

constexpr std::size_t kNameAt = 0x04;
constexpr std::string_view kEngineName = "Standard Jet DB";
constexpr std::size_t kVersionAt = 0x14;
constexpr std::size_t kMaskedAt = 0x18;
constexpr std::size_t kMasked = 128;
constexpr std::size_t kMaskedJet3 = 126;
constexpr std::size_t kColumnMarkAt = 0x38;
constexpr std::size_t kLcidJet3At = 0x3A;
constexpr std::size_t kCodePageAt = 0x3C;
constexpr std::size_t kKeyAt = 0x3E;
constexpr std::size_t kPasswordAt = 0x42;
constexpr std::size_t kPasswordJet3 = 20;
constexpr std::size_t kPasswordJet4 = 40;
constexpr std::size_t kBuildJet3At = 0x56;
constexpr std::size_t kBuildJet4At = 0x6A;
constexpr std::size_t kOrderJet4At = 0x6E;
constexpr std::size_t kCreatedAt = 0x72;
constexpr std::size_t kClearJet4At = 0x98;
constexpr std::size_t kCommitPairs = 256;
constexpr std::uint16_t kGeneral = 0x0409;

/// Covers the fields from 0x18 on in every file.
constexpr std::array<std::uint8_t, kMasked> kMask{
    0xb5, 0x6f, 0x03, 0x62, 0x61, 0x08, 0xc2, 0x55, 0xeb, 0xa9, 0x67, 0x72, 0x43, 0x3f, 0x00, 0x9c,
    0x7a, 0x9f, 0x90, 0xff, 0x80, 0x9a, 0x31, 0xc5, 0x79, 0xba, 0xed, 0x30, 0xbc, 0xdf, 0xcc, 0x9d,
    0x63, 0xd9, 0xe4, 0xc3, 0x7b, 0x42, 0xfb, 0x8a, 0xbc, 0x4e, 0x86, 0xfb, 0xec, 0x37, 0x5d, 0x44,
    0x9c, 0xfa, 0xc6, 0x5e, 0x28, 0xe6, 0x13, 0xb6, 0x8a, 0x60, 0x54, 0x94, 0x7b, 0x36, 0xf5, 0x72,
    0xdf, 0xb1, 0x77, 0xf4, 0x13, 0x43, 0xcf, 0xaf, 0xb1, 0x33, 0x34, 0x61, 0x79, 0x5b, 0x92, 0xb5,
    0x7c, 0x2a, 0x05, 0xf1, 0x7c, 0x99, 0x01, 0x1b, 0x98, 0xfd, 0x12, 0x4f, 0x4a, 0x94, 0x6c, 0x3e,
    0x60, 0x26, 0x5f, 0x95, 0xf8, 0xd0, 0x89, 0x24, 0x85, 0x67, 0xc6, 0x1f, 0x27, 0x44, 0xd2, 0xee,
    0xcf, 0x65, 0xed, 0xff, 0x07, 0xc7, 0x46, 0xa1, 0x78, 0x16, 0x0c, 0xed, 0xe9, 0x2d, 0x62, 0xd4};

/// A creation date, build and account names that belong together: how the names follow from the
/// rest isn't known, so every new Jet 4 file has this set.
constexpr std::array<std::uint8_t, 8> kCreatedJet4{0x3e, 0x85, 0xd3, 0x3b, 0x3e, 0xab, 0xe4, 0x40};
constexpr std::uint16_t kBuildJet4 = 0x261C;
constexpr std::uint16_t kBuildJet3 = 9502;

void applyMask(std::span<std::byte> page, Version version) {
    const std::size_t size = version == Version::jet3 ? kMaskedJet3 : kMasked;
    for (std::size_t i = 0; i < size; ++i)
        page[kMaskedAt + i] ^= std::byte{kMask[i]};
}

/// Jet 4 covers the password once more, with the day of creation repeated.
void applyDayMask(std::span<std::byte> page) {
    const auto created = load<double>(page.data() + kCreatedAt);
    std::array<std::byte, 4> mask{};
    if (std::isfinite(created) && std::fabs(created) < 2147483647.0)
        store<std::int32_t>(mask.data(), static_cast<std::int32_t>(created));
    for (std::size_t i = 0; i < kPasswordJet4; ++i)
        page[kPasswordAt + i] ^= mask[i % mask.size()];
}

std::string_view ascii(std::span<const std::byte> bytes, std::size_t at, std::size_t length) {
    return {reinterpret_cast<const char*>(bytes.data() + at), length};
}

std::string passwordOf(std::span<std::byte> page, Version version) {
    if (version == Version::jet4)
        applyDayMask(page);
    const std::size_t step = version == Version::jet3 ? 1 : 2;
    const std::size_t size = version == Version::jet3 ? kPasswordJet3 : kPasswordJet4;
    std::size_t used = 0;
    while (used + step <= size &&
           std::any_of(page.begin() + static_cast<std::ptrdiff_t>(kPasswordAt + used),
                       page.begin() + static_cast<std::ptrdiff_t>(kPasswordAt + used + step),
                       [](std::byte b) { return b != std::byte{}; }))
        used += step;
    return TextCodec(version).decode(page.subspan(kPasswordAt, used));
}

[[noreturn]] void refuse(const std::string& sentence) { throw Error(Errc::unsupported, sentence); }

} // namespace

Header parseHeader(std::span<const std::byte> page) {
    const auto begins = [&](std::string_view name) {
        return page.size() > kNameAt + name.size() && ascii(page, kNameAt, name.size()) == name;
    };
    if (begins("Standard ACE DB"))
        refuse("O arquivo é de um formato mais novo (.accdb), que este programa não abre. "
               "Salve-o no formato .mdb.");
    if (begins("MSISAM Database"))
        refuse("O arquivo é de um programa de finanças e não pode ser aberto.");
    if (page.size() < formatOf(Version::jet3).pageSize ||
        load<std::uint32_t>(page.data()) != 0x100 || !begins(kEngineName))
        refuse("O arquivo não é um banco de dados .mdb.");
    const auto version = std::to_integer<unsigned>(page[kVersionAt]);
    if (version > 1)
        refuse("O arquivo é de uma versão mais nova do formato, que este programa não abre. "
               "Salve-o no formato .mdb.");

    Header header;
    header.version = version == 0 ? Version::jet3 : Version::jet4;
    if (page.size() < formatOf(header.version).pageSize)
        corrupt(PageNo{0}, "o arquivo é menor do que uma página");
    Bytes clear(page.begin(), page.end());
    applyMask(clear, header.version);
    if (load<std::uint32_t>(clear.data() + kKeyAt) != 0)
        refuse("O banco de dados está codificado. Decodifique-o com o programa que o criou.");

    header.codePage = load<std::uint16_t>(clear.data() + kCodePageAt);
    header.columnMark = load<std::uint16_t>(clear.data() + kColumnMarkAt);
    if (header.version == Version::jet3) {
        header.order = {load<std::uint16_t>(clear.data() + kLcidJet3At), 0, header.codePage};
    } else {
        header.order = {load<std::uint16_t>(clear.data() + kOrderJet4At),
                        load<std::uint8_t>(clear.data() + kOrderJet4At + 3), 1252,
                        load<std::uint8_t>(clear.data() + kOrderJet4At + 2)};
    }
    header.password = passwordOf(clear, header.version);
    return header;
}

Header readHeader(const File& file) {
    Bytes page(static_cast<std::size_t>(
        std::min<std::uint64_t>(file.size(), formatOf(Version::jet4).pageSize)));
    file.read(0, page);
    return parseHeader(page);
}

Bytes buildHeader(Version version) {
    const Format& format = formatOf(version);
    Bytes page(format.pageSize);
    store<std::uint32_t>(page.data(), 0x100);
    std::memcpy(page.data() + kNameAt, kEngineName.data(), kEngineName.size());
    page[kVersionAt] = std::byte{version == Version::jet4};

    // Where the two page maps and the four system tables are.
    std::size_t at = kMaskedAt;
    for (const std::uint32_t place : {0x100U, 0x101U, 2U, 3U, 4U, 5U}) {
        store<std::uint32_t>(page.data() + at, place);
        at += 4;
    }
    store<std::uint16_t>(page.data() + kCodePageAt, 1252);
    if (version == Version::jet3) {
        store<std::uint16_t>(page.data() + kColumnMarkAt, 1);
        store<std::uint16_t>(page.data() + kLcidJet3At, kGeneral);
        store<std::uint16_t>(page.data() + kBuildJet3At, kBuildJet3);
    } else {
        store<std::uint16_t>(page.data() + kBuildJet4At, kBuildJet4);
        store<std::uint32_t>(page.data() + kOrderJet4At, kGeneral);
        std::memcpy(page.data() + kCreatedAt, kCreatedJet4.data(), kCreatedJet4.size());
        applyDayMask(page); // over the zeros of no password
        store<std::uint32_t>(page.data() + kClearJet4At, 0x654);
        std::memcpy(page.data() + kClearJet4At + 4, "4.0", 3);
    }
    applyMask(page, version);

    for (std::size_t i = 0; i < kCommitPairs; ++i)
        store<std::uint16_t>(page.data() + format.commitPairsAt + 2 * i, i == 0 ? 0x0101 : 0x0100);
    return page;
}

Accounts newAccounts(Version version) {
    const auto bytes = [](unsigned first, unsigned second) {
        return Bytes{static_cast<std::byte>(first), static_cast<std::byte>(second)};
    };
    if (version == Version::jet3)
        return {bytes(0x02, 0x03), bytes(0x03, 0x01), bytes(0x02, 0x01), bytes(0x02, 0x04)};
    return {bytes(0x65, 0x89), bytes(0x64, 0x8B), bytes(0x65, 0x8B), bytes(0x65, 0x8E)};
}

} // namespace jet
