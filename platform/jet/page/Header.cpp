#include "jet/page/Header.h"

#include "jet/page/CommitPairs.h"
#include "jet/text/TextCodec.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace jet {

namespace {

constexpr const HeaderLayout& kLayout3 = kJet3Format.header;
constexpr const HeaderLayout& kLayout4 = kJet4Format.header;

// What a file says it is, at the same place in every one.
constexpr std::string_view kEngineName = "Standard Jet DB";
constexpr std::string_view kNewerName = "Standard ACE DB";
constexpr std::string_view kMoneyName = "MSISAM Database";

constexpr std::uint8_t kJet4Byte = 1; ///< of the version; Jet 3 has 0
constexpr std::uint16_t kGeneral = 0x0409;
constexpr std::uint16_t kLatin = 1252;
constexpr std::uint16_t kColumnMark = 1;
constexpr std::uint32_t kClearMark = 0x654;
constexpr std::uint32_t kClearName = 0x00302E34; // "4.0" and a zero

/// Covers the fields from 0x18 on in every file.
constexpr std::array<std::uint8_t, kLayout4.masked.size> kMask{
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

const HeaderLayout& layoutOf(Version version) { return formatOf(version).header; }

void applyMask(std::span<std::byte> page, Version version) {
    const Stretch masked = layoutOf(version).masked;
    for (std::size_t i = 0; i < masked.size; ++i)
        page[masked.at + i] ^= std::byte{kMask[i]};
}

/// Jet 4 covers the password once more, with the day of creation repeated.
void applyDayMask(std::span<std::byte> page) {
    const auto created = load(page.data(), *kLayout4.created);
    std::array<std::byte, 4> mask{};
    if (std::isfinite(created) && std::fabs(created) < 2147483647.0)
        store<std::int32_t>(mask.data(), static_cast<std::int32_t>(created));
    for (std::size_t i = 0; i < kLayout4.password.size; ++i)
        page[kLayout4.password.at + i] ^= mask[i % mask.size()];
}

bool says(std::span<const std::byte> page, std::string_view name) {
    return page.size() > kLayout3.name.at + name.size() &&
           std::memcmp(page.data() + kLayout3.name.at, name.data(), name.size()) == 0;
}

std::string passwordOf(std::span<std::byte> page, Version version) {
    if (version == Version::jet4)
        applyDayMask(page);
    const Stretch field = layoutOf(version).password;
    const std::span<const std::byte> password = page.subspan(field.at, field.size);
    const std::size_t step = version == Version::jet3 ? 1 : 2;
    std::size_t used = 0;
    while (used + step <= password.size() &&
           std::ranges::any_of(password.subspan(used, step),
                               [](std::byte b) { return b != std::byte{}; }))
        used += step;
    return TextCodec(version).decode(password.first(used));
}

[[noreturn]] void refuse(const std::string& sentence) { throw Error(Errc::unsupported, sentence); }

} // namespace

bool namesItsFormat(std::span<const std::byte> page) {
    return says(page, kEngineName) || says(page, kNewerName) || says(page, kMoneyName);
}

Header parseHeader(std::span<const std::byte> page) {
    if (says(page, kNewerName))
        refuse("O arquivo é de um formato mais novo (.accdb), que este programa não abre. "
               "Salve-o no formato .mdb.");
    if (says(page, kMoneyName))
        refuse("O arquivo é de um programa de finanças e não pode ser aberto.");
    if (page.size() < formatOf(Version::jet3).pageSize || !isPage(page.data(), PageKind::header) ||
        load(page.data(), kLayout3.zero) != 0 || !says(page, kEngineName))
        refuse("O arquivo não é um banco de dados .mdb.");
    const std::uint8_t version = load(page.data(), kLayout3.versionByte);
    if (version > kJet4Byte)
        refuse("O arquivo é de uma versão mais nova do formato, que este programa não abre. "
               "Salve-o no formato .mdb.");

    Header header;
    header.version = version == kJet4Byte ? Version::jet4 : Version::jet3;
    if (page.size() < formatOf(header.version).pageSize)
        corrupt(PageNo{0}, "o arquivo é menor do que uma página");
    const HeaderLayout& layout = layoutOf(header.version);
    Bytes clear(page.begin(), page.end());
    applyMask(clear, header.version);
    if (load(clear.data(), layout.key) != 0)
        refuse("O banco de dados está codificado. Decodifique-o com o programa que o criou.");

    header.codePage = load(clear.data(), layout.codePage);
    header.columnMark = load(clear.data(), layout.columnMark);
    header.order.lcid = load(clear.data(), layout.language);
    if (header.version == Version::jet3) {
        header.order.codePage = header.codePage;
    } else {
        header.order.version = load(clear.data(), *layout.orderVersion);
        header.order.variant = load(clear.data(), *layout.variant);
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
    const HeaderLayout& layout = format.header;
    const bool isJet3 = version == Version::jet3;
    Bytes page(format.pageSize);
    std::byte* const at = page.data();
    startPage(at, PageKind::header);
    std::memcpy(at + layout.name.at, kEngineName.data(), kEngineName.size());
    store(at, layout.versionByte, isJet3 ? 0 : kJet4Byte);

    store(at, layout.freePages, kFreePagesMap);
    store(at, layout.secondMap, kSecondMap);
    store(at, layout.objects, kObjectsPage);
    store(at, layout.rights, kRightsPage);
    store(at, layout.queries, kQueriesPage);
    store(at, layout.relationships, kRelationshipsPage);
    store(at, layout.columnMark, isJet3 ? kColumnMark : 0);
    store(at, layout.language, kGeneral);
    store(at, layout.codePage, kLatin);
    store(at, layout.build, isJet3 ? kBuildJet3 : kBuildJet4);
    if (!isJet3) {
        std::memcpy(at + (*layout.created).at, kCreatedJet4.data(), kCreatedJet4.size());
        applyDayMask(page); // over the zeros of no password
    }
    store(at, layout.clearMark, kClearMark);
    store(at, layout.clearName, kClearName);
    applyMask(page, version);

    for (std::size_t user = 0; user < CommitPairs::kUsers; ++user)
        store(at + layout.commitPairs.at, CommitPairs::pair(user),
              user == 0 ? CommitPairs::after(CommitPairs::kFirst) : CommitPairs::kFirst);
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
