#include "jet/row/DefinitionParts.h"

#include "jet/Names.h"
#include "jet/row/DefinitionReader.h"
#include "jet/text/TextCodec.h"

namespace jet {

namespace {

void append(Bytes& bytes, std::span<const std::byte> more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

} // namespace

DefinitionParts::DefinitionParts(const Format& format, ByteView definition) {
    const DefinitionLayout& layout = format.definition;
    const std::size_t real = definition.load(layout.realIndexes);
    const std::size_t count = definition.load(layout.columns);
    append(header, definition.sub(0, layout.size));
    DefinitionReader reader(format, definition);
    const auto take = [&](Bytes& part, auto&& pass) {
        const std::size_t begin = reader.at();
        pass();
        append(part, definition.sub(begin, reader.at() - begin));
    };
    take(statistics, [&] { reader.skip(real, format.statistics.size); });
    take(columns, [&] { reader.skip(count, format.column.size); });
    take(columnNames, [&] { reader.skipNames(count); });
    take(realIndexes, [&] { reader.skip(real, format.realIndex.size); });
    logicalIndexes.resize(definition.load(layout.logicalIndexes));
    for (Logical& logical : logicalIndexes)
        take(logical.block, [&] { reader.skip(1, format.logicalIndex.size); });
    const TextCodec codec(format.version);
    for (Logical& logical : logicalIndexes)
        take(logical.name,
             [&] { logical.folded = foldedName(codec.decode(reader.name().bytes())); });
    take(longValues, [&] {
        while (definition.load(Field<std::uint16_t>{reader.at()}) != kNoColumn)
            reader.skip(1, LongValueMapsLayout::size);
    });
}

Bytes DefinitionParts::joined(const Format& format) const {
    Bytes bytes = header;
    for (const Bytes* part : {&statistics, &columns, &columnNames, &realIndexes})
        append(bytes, *part);
    for (const Logical& logical : logicalIndexes)
        append(bytes, logical.block);
    for (const Logical& logical : logicalIndexes)
        append(bytes, logical.name);
    append(bytes, longValues);
    store(addBlock(bytes, LongValueMapsLayout::column.size), LongValueMapsLayout::column,
          kNoColumn);
    store(bytes.data(), format.definition.length, static_cast<std::uint32_t>(bytes.size()));
    return bytes;
}

} // namespace jet
