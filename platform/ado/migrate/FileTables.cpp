#include "ado/migrate/FileTables.h"

#include <algorithm>

namespace ado {

namespace {

constexpr std::uint16_t kWidest = 255;
constexpr std::uint8_t kDigitsOfAny = 28;

jet::ColumnSpec columnSpecOf(const jet::Column& column) {
    jet::ColumnSpec spec{.name = column.name, .type = column.type};
    if (column.type == jet::ColumnType::text)
        spec.width = static_cast<std::uint16_t>(column.maxCharacters());
    else if (column.type == jet::ColumnType::binary)
        spec.width = column.length;
    if (spec.width == 0 &&
        (column.type == jet::ColumnType::text || column.type == jet::ColumnType::binary))
        spec.width = kWidest;
    if (column.type == jet::ColumnType::numeric) {
        spec.precision = column.precision == 0 ? kDigitsOfAny : column.precision;
        spec.scale = column.scale;
    }
    spec.autonumber = column.autonumber;
    spec.compressed = column.compressed;
    return spec;
}

} // namespace

jet::TableSpec specOf(const jet::Table& table) {
    jet::TableSpec spec{.name = table.name(), .columns = {}, .indexes = {}};
    for (const jet::Column& column : table.columns())
        spec.columns.push_back(columnSpecOf(column));
    for (const jet::Index& index : table.indexes()) {
        if (index.columns.empty())
            continue;
        jet::IndexSpec made{.name = index.name,
                            .columns = {},
                            .primary = index.primary,
                            .unique = index.unique || index.primary,
                            .ignoreNulls = index.ignoreNulls,
                            .required = index.required || index.primary};
        for (const jet::IndexColumn& key : index.columns)
            made.columns.push_back({table.columns()[key.column].name, key.ascending});
        spec.indexes.push_back(std::move(made));
    }
    return spec;
}

} // namespace ado
