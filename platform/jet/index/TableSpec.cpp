#include "jet/TableSpec.h"

#include "jet/Error.h"
#include "jet/Names.h"
#include "jet/page/Format.h"
#include "jet/text/TextCodec.h"

#include <algorithm>

namespace jet {

namespace {

bool validName(std::string_view name) {
    return !name.empty() && name.front() != ' ' &&
           std::none_of(name.begin(), name.end(), [](char c) {
               return static_cast<unsigned char>(c) < 0x20 ||
                      std::string_view(".![]`").find(c) != std::string_view::npos;
           });
}

void requireName(const TextCodec& codec, const std::string& name) {
    if (!validName(name) || codec.characters(name) > kMaxNameLength)
        throw Error(Errc::misuse, "\"" + name + "\" não pode ser nome de tabela, campo ou índice.");
}

void requireMakeable(const ColumnSpec& column, Version version) {
    using enum ColumnType;
    if (column.type == text || column.type == binary) {
        if (column.width == 0 || column.width > 255)
            throw Error(Errc::misuse,
                        "O campo \"" + column.name + "\" deve ter de 1 a 255 de largura.");
    } else if ((fixedLength(column.type) == 0 && column.type != boolean &&
                !isLongValue(column.type)) ||
               (column.type == numeric && version == Version::jet3)) {
        throw Error(Errc::misuse, "O campo \"" + column.name +
                                      "\" é de um tipo que este programa não sabe criar.");
    }
    if (column.autonumber && column.type != longInteger)
        throw Error(Errc::misuse, "O campo \"" + column.name + "\" não pode ser numerado.");
}

void requireMakeable(const IndexSpec& index, const TableSpec& table) {
    if (index.columns.empty() || index.columns.size() > kMaxIndexColumns)
        throw Error(Errc::misuse, "O índice \"" + index.name + "\" deve ter de 1 a 10 campos.");
    for (const IndexSpec::KeyColumn& key : index.columns) {
        const std::size_t column = table.placeOf(key.name);
        if (column == table.columns.size())
            throw Error(Errc::notFound, "O índice \"" + index.name + "\" usa o campo \"" +
                                            key.name + "\", que não existe.");
        if (table.columns[column].type == ColumnType::ole)
            throw Error(Errc::misuse, "O campo \"" + key.name + "\" não pode ter índice.");
    }
}

} // namespace

std::size_t TableSpec::placeOf(const std::string& column) const {
    const auto found = std::ranges::find(columns, foldedName(column),
                                         [](const ColumnSpec& c) { return foldedName(c.name); });
    return static_cast<std::size_t>(found - columns.begin());
}

void TableSpec::requireMakeable(const TextCodec& names) const {
    requireName(names, name);
    if (columns.empty() || columns.size() > kMaxColumns || indexes.size() > kMaxIndexes)
        throw Error(Errc::misuse,
                    "A tabela \"" + name + "\" deve ter de 1 a 255 campos e no máximo 32 índices.");
    for (std::size_t i = 0; i < columns.size(); ++i) {
        requireName(names, columns[i].name);
        if (placeOf(columns[i].name) < i)
            throw Error(Errc::exists, "O campo \"" + columns[i].name + "\" aparece duas vezes.");
        jet::requireMakeable(columns[i], names.version());
    }
    for (const IndexSpec& index : indexes) {
        requireName(names, index.name);
        jet::requireMakeable(index, *this);
    }
}

} // namespace jet
