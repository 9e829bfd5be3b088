#include "jet/rule/Properties.h"

#include "jet/Names.h"
#include "jet/page/ByteView.h"

#include <algorithm>

namespace jet {

namespace {

constexpr std::size_t kMarkSize = 4;

std::string_view markOf(const TextCodec& names) {
    return names.version() == Version::jet3 ? "KKD" : "MR2";
}

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
            {data.begin(), data.end()},
            value.load(ValueLayout::mark)
        });
    }
    return group;
}

void append(Bytes& bytes, std::span<const std::byte> more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

/// Zeros for a structure of `size` bytes at the end of `bytes`; where they begin.
std::size_t open(Bytes& bytes, std::size_t size) {
    bytes.resize(bytes.size() + size);
    return bytes.size() - size;
}

/// Says at `begin` how long what has been written from there is.
template <class Length>
void close(Bytes& bytes, std::size_t begin, Field<Length> length) {
    store(bytes.data() + begin, length, static_cast<Length>(bytes.size() - begin));
}

void appendGroup(Bytes& bytes, const PropertyGroup& group, const std::vector<std::string>& names,
                 const TextCodec& codec) {
    const std::size_t block = open(bytes, BlockLayout::size);
    store(bytes.data() + block, BlockLayout::kind,
          static_cast<std::uint16_t>(group.column.empty() ? tableBlock : columnBlock));
    const std::size_t head = open(bytes, GroupLayout::size);
    const Bytes name = codec.encode(group.column, false, false);
    store(bytes.data() + head, GroupLayout::nameSize, static_cast<std::uint16_t>(name.size()));
    append(bytes, name);
    close(bytes, head, GroupLayout::length);
    for (const Property& property : group.properties) {
        const std::size_t value = open(bytes, ValueLayout::size);
        std::byte* const at = bytes.data() + value;
        store(at, ValueLayout::mark, property.mark);
        store(at, ValueLayout::type, static_cast<std::uint8_t>(property.type));
        store(at, ValueLayout::name,
              static_cast<std::uint16_t>(std::ranges::find(names, property.name) - names.begin()));
        store(at, ValueLayout::dataSize, static_cast<std::uint16_t>(property.data.size()));
        append(bytes, property.data);
        close(bytes, value, ValueLayout::length);
    }
    close(bytes, block, BlockLayout::length);
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
    const std::string_view mark = markOf(names);
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

Bytes storedProperties(const std::vector<PropertyGroup>& groups, const TextCodec& names) {
    std::vector<std::string> known;
    for (const PropertyGroup& group : groups)
        for (const Property& property : group.properties)
            if (std::ranges::find(known, property.name) == known.end())
                known.push_back(property.name);
    if (known.empty())
        return {};
    Bytes bytes(kMarkSize);
    std::ranges::transform(markOf(names), bytes.begin(), [](char c) { return std::byte(c); });
    const std::size_t block = open(bytes, BlockLayout::size);
    store(bytes.data() + block, BlockLayout::kind, static_cast<std::uint16_t>(nameBlock));
    for (const std::string& name : known) {
        const Bytes text = names.encode(name, false, false);
        const std::size_t at = open(bytes, kNameSize.size);
        store(bytes.data() + at, kNameSize, static_cast<std::uint16_t>(text.size()));
        append(bytes, text);
    }
    close(bytes, block, BlockLayout::length);
    for (const PropertyGroup& group : groups)
        appendGroup(bytes, group, known, names);
    return bytes;
}

Bytes recodedProperties(std::span<const std::byte> stored, const TextCodec& from,
                        const TextCodec& to) {
    std::vector<PropertyGroup> groups = parseProperties(stored, from, PageNo{});
    for (PropertyGroup& group : groups)
        for (Property& property : group.properties)
            if (isText(property.type))
                property.data = to.encode(property.text(from), false, false);
    return storedProperties(groups, to);
}

} // namespace jet
