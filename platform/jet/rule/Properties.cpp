#include "jet/rule/Properties.h"

#include "jet/Names.h"
#include "jet/page/ByteView.h"

#include <algorithm>

namespace jet {

namespace {

constexpr std::size_t kMarkSize = 4;

enum BlockKind : std::uint16_t { tableBlock = 0, columnBlock = 1, nameBlock = 0x80 };

struct BlockLayout {
    static constexpr Field<std::uint32_t> length{0}; ///< of the block
    static constexpr Field<std::uint16_t> kind{4};
    static constexpr std::size_t size = 6;
};
/// A name in a block of names; its text follows.
constexpr Field<std::uint16_t> kNameSize{0};
/// What the block of a table or a column begins with; the values follow.
struct GroupLayout {
    static constexpr Field<std::uint32_t> length{0}; ///< name included
    static constexpr Field<std::uint16_t> nameSize{4};
    static constexpr std::size_t size = 6;
};
/// The data follows.
struct ValueLayout {
    static constexpr Field<std::uint16_t> length{0}; ///< data included
    static constexpr Field<std::uint8_t> mark{2};
    static constexpr Field<std::uint8_t> type{3};
    static constexpr Field<std::uint16_t> name{4}; ///< its place among the names
    static constexpr Field<std::uint16_t> dataSize{6};
    static constexpr std::size_t size = 8;
};
static_assert(fill(0, BlockLayout::size, {BlockLayout::length, BlockLayout::kind}));
static_assert(fill(0, GroupLayout::size, {GroupLayout::length, GroupLayout::nameSize}));
static_assert(fill(0, ValueLayout::size,
                   {ValueLayout::length, ValueLayout::mark, ValueLayout::type, ValueLayout::name,
                    ValueLayout::dataSize}));

/// The part of `size` bytes that begins at `at`, which moves behind it.
ByteView take(const ByteView& bytes, std::size_t& at, std::size_t size) {
    const ByteView part(bytes.sub(at, size), bytes.page());
    at += size;
    return part;
}

/// The part that begins at `at` and says its own length, of at least `least` bytes.
template <class Length>
ByteView takeWhole(const ByteView& bytes, std::size_t& at, Field<Length> length,
                   std::size_t least) {
    const ByteView head(bytes.sub(at, length.end()), bytes.page());
    const std::size_t size = head.load(length);
    if (size < least)
        corrupt(bytes.page(), "as propriedades de uma tabela não têm o tamanho que dizem ter");
    return take(bytes, at, size);
}

std::vector<std::string> namesOf(const ByteView& block, const TextCodec& codec) {
    std::vector<std::string> names;
    for (std::size_t at = BlockLayout::size; at < block.size();) {
        const std::size_t size = take(block, at, kNameSize.size).load(kNameSize);
        names.push_back(codec.decode(take(block, at, size).bytes()));
    }
    return names;
}

PropertyGroup groupOf(const ByteView& block, const std::vector<std::string>& names,
                      const TextCodec& codec) {
    PropertyGroup group;
    std::size_t at = BlockLayout::size;
    const ByteView head = takeWhole(block, at, GroupLayout::length, GroupLayout::size);
    group.column = codec.decode(head.sub(GroupLayout::size, head.load(GroupLayout::nameSize)));
    while (at < block.size()) {
        const ByteView value = takeWhole(block, at, ValueLayout::length, ValueLayout::size);
        const std::size_t name = value.load(ValueLayout::name);
        if (name >= names.size())
            corrupt(block.page(), "uma propriedade de tabela não tem nome");
        const auto data = value.sub(ValueLayout::size, value.load(ValueLayout::dataSize));
        group.properties.push_back({
            names[name],
            static_cast<ColumnType>(value.load(ValueLayout::type)),
            {data.begin(), data.end()}
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
        const ByteView block = takeWhole(bytes, at, BlockLayout::length, BlockLayout::size);
        switch (block.load(BlockLayout::kind)) {
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
