#include "jet/row/RowEncoder.h"

#include "jet/page/DataPage.h"
#include "jet/row/LongValues.h"
#include "jet/row/StoredNumeric.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace jet {

namespace {

/// A row may have to become a pointer to where it has moved.
constexpr std::size_t kSmallestRow = kMovedTo.size;

[[noreturn]] void wrongType(const Column& column) {
    throw Error(Errc::outOfRange,
                "O valor informado não é do tipo do campo \"" + column.name + "\".");
}

[[noreturn]] void tooLarge(const Column& column) {
    throw Error(Errc::outOfRange, "O valor informado não cabe no campo \"" + column.name + "\".");
}

template <class T>
Bytes bytesOf(T value) {
    Bytes bytes(sizeof value);
    store<T>(bytes.data(), value);
    return bytes;
}

template <class T>
Bytes integer(const Column& column, const Value& value) {
    std::int64_t number = 0;
    if (const auto* whole = std::get_if<std::int64_t>(&value))
        number = *whole;
    else if (const auto* yes = std::get_if<bool>(&value))
        number = *yes ? -1 : 0; // as the format's own programs take a yes for a number
    else
        wrongType(column);
    if (number < std::numeric_limits<T>::min() || number > std::numeric_limits<T>::max())
        tooLarge(column);
    return bytesOf(static_cast<T>(number));
}

double real(const Column& column, const Value& value) {
    if (const auto* number = std::get_if<double>(&value))
        return *number;
    if (const auto* whole = std::get_if<std::int64_t>(&value))
        return static_cast<double>(*whole);
    wrongType(column);
}

Bytes currency(const Column& column, const Value& value) {
    constexpr std::int64_t kScale = 10000;
    if (const auto* amount = std::get_if<Currency>(&value))
        return bytesOf(amount->tenThousandths);
    const auto* whole = std::get_if<std::int64_t>(&value);
    if (!whole)
        wrongType(column);
    if (*whole > std::numeric_limits<std::int64_t>::max() / kScale ||
        *whole < std::numeric_limits<std::int64_t>::min() / kScale)
        tooLarge(column);
    return bytesOf(*whole * kScale);
}

Bytes single(const Column& column, const Value& value) {
    const double number = real(column, value);
    if (std::isfinite(number) && std::fabs(number) > std::numeric_limits<float>::max())
        tooLarge(column);
    return bytesOf(static_cast<float>(number));
}

Bytes date(const Column& column, const Value& value) {
    const auto* moment = std::get_if<Date>(&value);
    if (!moment)
        wrongType(column);
    if (!moment->inRange())
        throw Error(Errc::outOfRange, "A data informada no campo \"" + column.name +
                                          "\" deve ficar entre os anos 100 e 9999.");
    return bytesOf(moment->days);
}

Bytes text(const Column& column, const Value& value) {
    const auto* characters = std::get_if<std::string>(&value);
    if (!characters)
        wrongType(column);
    const bool memo = column.type == ColumnType::memo;
    if (!memo) {
        const std::size_t length = column.codec.characters(*characters);
        if (length > column.maxCharacters())
            throw Error(Errc::tooLong, "O campo \"" + column.name + "\" aceita no máximo " +
                                           std::to_string(column.maxCharacters()) +
                                           " caracteres; o texto informado tem " +
                                           std::to_string(length) + ".");
    }
    return column.codec.encode(*characters, column.compressed && !column.fixed, memo);
}

/// A text of fixed length is filled up with blanks, any other value with zeros.
void fillUp(const Column& column, Bytes& bytes) {
    if (column.type == ColumnType::text) {
        const Bytes blank = column.codec.encode(" ", false, false);
        while (bytes.size() + blank.size() <= column.length)
            bytes.insert(bytes.end(), blank.begin(), blank.end());
    }
    bytes.resize(column.length);
}

Bytes raw(const Column& column, const Value& value) {
    const auto* bytes = std::get_if<Bytes>(&value);
    if (!bytes)
        wrongType(column);
    if (column.type == ColumnType::binary && bytes->size() > column.length)
        throw Error(Errc::tooLong, "O campo \"" + column.name + "\" aceita no máximo " +
                                       std::to_string(column.length) + " bytes.");
    return *bytes;
}

Bytes guid(const Column& column, const Value& value) {
    const auto* id = std::get_if<Guid>(&value);
    if (!id)
        wrongType(column);
    return {id->bytes.begin(), id->bytes.end()};
}

Bytes numeric(const Column& column, const Value& value) {
    const auto* number = std::get_if<Numeric>(&value);
    if (!number || number->scale != column.scale)
        wrongType(column);
    return StoredNumeric::bytesOf(*number);
}

Bytes encode(const Column& column, const Value& value) {
    switch (column.type) {
    case ColumnType::byte:
        return integer<std::uint8_t>(column, value);
    case ColumnType::integer:
        return integer<std::int16_t>(column, value);
    case ColumnType::longInteger:
        return integer<std::int32_t>(column, value);
    case ColumnType::currency:
        return currency(column, value);
    case ColumnType::single:
        return single(column, value);
    case ColumnType::real:
        return bytesOf(real(column, value));
    case ColumnType::date:
        return date(column, value);
    case ColumnType::text:
    case ColumnType::memo:
        return text(column, value);
    case ColumnType::binary:
    case ColumnType::ole:
        return raw(column, value);
    case ColumnType::guid:
        return guid(column, value);
    case ColumnType::numeric:
        return numeric(column, value);
    default:
        throw Error(Errc::unsupported, "O campo \"" + column.name +
                                           "\" é de um tipo que este programa não sabe gravar.");
    }
}

/// The parts that a row consists of besides its values.
struct Layout {
    std::size_t fixedEnd;
    std::size_t mask;
};

Layout layoutOf(const Format& format, const TableDefinition& table) {
    return {format.row.countSize + table.fixedSize, RowLayout::maskSize(table.maxColumns)};
}

/// The jump table of a row whose values begin or end at `positions`; the row grows with it.
Bytes jumpTable(const std::vector<std::size_t>& positions, std::size_t sizeWithout) {
    std::size_t count = 0;
    while ((sizeWithout + count - 1) / 256 > count)
        ++count;
    Bytes jumps;
    for (std::size_t k = 0; k < count; ++k) {
        const auto first = std::find_if(positions.begin(), positions.end(),
                                        [&](std::size_t at) { return at >= 256 * (k + 1); });
        jumps.push_back(first == positions.end()
                            ? std::byte{0xFF}
                            : static_cast<std::byte>(first - positions.begin()));
    }
    return jumps;
}

/// What RowOffsets reads.
void appendOffsets(Bytes& row, const std::vector<std::size_t>& positions, std::size_t maskSize,
                   const Format& format) {
    const auto append = [&](std::size_t number) {
        const ShortField field{row.size(), format.row.countSize};
        row.resize(field.at + field.size);
        store(row.data(), field, number);
    };
    Bytes jumps;
    if (format.isJet3())
        jumps = jumpTable(positions, row.size() + positions.size() + 1 + maskSize);
    std::for_each(positions.rbegin(), positions.rend(), append);
    row.insert(row.end(), jumps.rbegin(), jumps.rend());
    append(positions.size() - 1);
}

} // namespace

StoredRow storedRow(const TableDefinition& table, const RowView& row) {
    StoredRow fields(table.columns.size());
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (table.columns[i].type == ColumnType::boolean) {
            fields[i].present = row.boolean(i);
        } else if (!row.isNull(i)) {
            const auto bytes = row.stored(i);
            fields[i].present = true;
            fields[i].bytes.assign(bytes.begin(), bytes.end());
        }
    }
    return fields;
}

StoredField encodeField(const Column& column, const Value& value) {
    if (column.type == ColumnType::boolean) {
        if (isNull(value))
            return {};
        if (const auto* yes = std::get_if<bool>(&value))
            return {*yes, {}, {}};
        if (const auto* number = std::get_if<std::int64_t>(&value))
            return {*number != 0, {}, {}};
        wrongType(column);
    }
    if (isNull(value))
        return {};
    StoredField field{true, encode(column, value), {}};
    if (isLongValue(column.type))
        field.content = std::exchange(field.bytes, {});
    else if (column.fixed && field.bytes.size() < column.length)
        fillUp(column, field.bytes);
    return field;
}

Bytes assembleRow(const Format& format, const TableDefinition& table, const StoredRow& fields) {
    const auto [fixedEnd, maskSize] = layoutOf(format, table);
    Bytes row(fixedEnd);
    Bytes mask(maskSize);
    store(row.data(), format.row.count(), table.maxColumns);

    std::vector<const Bytes*> variables(table.maxVariables);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const Column& column = table.columns[i];
        if (!fields[i].present)
            continue;
        setBit(mask, column.number);
        if (column.type == ColumnType::boolean)
            continue;
        if (column.fixed)
            std::copy(fields[i].bytes.begin(), fields[i].bytes.end(),
                      row.begin() +
                          static_cast<std::ptrdiff_t>(format.row.countSize + column.fixedOffset));
        else
            variables[column.variableIndex] = &fields[i].bytes;
    }
    if (table.maxVariables > 0) {
        std::vector<std::size_t> positions; // where each value begins, and where the last ends
        for (const Bytes* value : variables) {
            positions.push_back(row.size());
            if (value)
                row.insert(row.end(), value->begin(), value->end());
        }
        positions.push_back(row.size());
        if (row.size() > format.pageSize)
            throw Error(Errc::tooLong, "O registro é grande demais para o banco de dados.");
        appendOffsets(row, positions, maskSize, format);
    } else if (row.size() + maskSize < kSmallestRow) {
        row.resize(kSmallestRow - maskSize);
    }
    row.insert(row.end(), mask.begin(), mask.end());
    if (row.size() > format.row.largest)
        throw Error(Errc::tooLong, "O registro é grande demais para o banco de dados.");
    return row;
}

std::size_t rowSize(const Format& format, const TableDefinition& table, const StoredRow& fields,
                    bool inRow) {
    const auto [fixedEnd, maskSize] = layoutOf(format, table);
    std::size_t size = fixedEnd + maskSize;
    if (table.maxVariables > 0)
        size += (table.maxVariables + std::size_t{2}) * format.row.countSize;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (fields[i].content) {
            size += LongValueDefinition::kSize;
            if (inRow && fields[i].content->size() <= format.inlineLongValue)
                size += fields[i].content->size();
        } else if (fields[i].present && !table.columns[i].fixed) {
            size += fields[i].bytes.size();
        }
    }
    return format.isJet3() ? size + size / 256 + 1 : size;
}

} // namespace jet
