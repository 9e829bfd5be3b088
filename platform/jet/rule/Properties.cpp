#include "jet/rule/Properties.h"

#include "jet/Names.h"
#include "jet/page/ByteView.h"

#include <algorithm>

namespace jet {

namespace {

constexpr std::size_t kMarkSize = 4;
constexpr std::size_t kBlockHeader = 6;
constexpr std::size_t kValueHeader = 8;

enum BlockKind : std::uint16_t { tableBlock = 0, columnBlock = 1, nameBlock = 0x80 };

/// The part of `size` bytes that begins at `at`, which moves behind it.
ByteView take(const ByteView& bytes, std::size_t& at, std::size_t size) {
    const ByteView part(bytes.sub(at, size), bytes.page());
    at += size;
    return part;
}

/// The part that begins at `at` and says its own length, of at least `least` bytes.
template <class Length>
ByteView takeWhole(const ByteView& bytes, std::size_t& at, std::size_t least) {
    const ByteView head(bytes.sub(at, sizeof(Length)), bytes.page());
    const std::size_t size = load<Length>(head.bytes().data());
    if (size < least)
        corrupt(bytes.page(), "as propriedades de uma tabela não têm o tamanho que dizem ter");
    return take(bytes, at, size);
}

std::vector<std::string> namesOf(const ByteView& block, const TextCodec& codec) {
    std::vector<std::string> names;
    for (std::size_t at = kBlockHeader; at < block.size();) {
        const std::size_t size = take(block, at, 2).u16(0);
        names.push_back(codec.decode(take(block, at, size).bytes()));
    }
    return names;
}

PropertyGroup groupOf(const ByteView& block, const std::vector<std::string>& names,
                      const TextCodec& codec) {
    PropertyGroup group;
    std::size_t at = kBlockHeader;
    const ByteView head = takeWhole<std::uint32_t>(block, at, 6);
    group.column = codec.decode(head.sub(6, head.u16(4)));
    while (at < block.size()) {
        const ByteView value = takeWhole<std::uint16_t>(block, at, kValueHeader);
        const std::size_t name = value.u16(4);
        if (name >= names.size())
            corrupt(block.page(), "uma propriedade de tabela não tem nome");
        const auto data = value.sub(kValueHeader, value.u16(6));
        group.properties.push_back({
            names[name], static_cast<ColumnType>(value.u8(3)), {data.begin(), data.end()}
        });
    }
    return group;
}

} // namespace

std::string Property::text(const TextCodec& codec) const {
    return isText(type) ? codec.decode(data) : std::string();
}

bool Property::yes() const noexcept {
    return type == ColumnType::boolean &&
           std::any_of(data.begin(), data.end(), [](std::byte b) { return b != std::byte{}; });
}

const Property* PropertyGroup::find(std::string_view name) const {
    const std::string wanted = foldedName(name);
    const auto found = std::find_if(properties.begin(), properties.end(), [&](const Property& p) {
        return foldedName(p.name) == wanted;
    });
    return found == properties.end() ? nullptr : &*found;
}

std::vector<PropertyGroup> parseProperties(std::span<const std::byte> stored,
                                           const TextCodec& names, PageNo page) {
    std::vector<PropertyGroup> groups;
    if (stored.empty())
        return groups;
    const ByteView bytes(stored, page);
    const std::string_view mark = names.version() == Version::jet3 ? "KKD" : "MR2";
    const auto found = bytes.sub(0, kMarkSize);
    if (!std::equal(mark.begin(), mark.end(), found.begin(),
                    [](char c, std::byte b) { return std::byte(c) == b; }))
        corrupt(page, "as propriedades de uma tabela não começam como deveriam");
    std::vector<std::string> known;
    for (std::size_t at = kMarkSize; at < bytes.size();) {
        const ByteView block = takeWhole<std::uint32_t>(bytes, at, kBlockHeader);
        switch (block.u16(4)) {
        case nameBlock:
            known = namesOf(block, names);
            break;
        case tableBlock:
        case columnBlock:
            groups.push_back(groupOf(block, known, names));
            break;
        default:
            break;
        }
    }
    return groups;
}

} // namespace jet
