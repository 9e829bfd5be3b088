#include "jet/row/RowEncoder.h"

#include "jet/row/LongValues.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace jet {

namespace {

/// A row may have to become a pointer to where it has moved, which takes four bytes.
constexpr std::size_t kSmallestRow = 4;

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
        number = *yes ? -1 : 0;
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
    Bytes bytes{number->negative ? std::byte{0x80} : std::byte{}};
    for (const std::uint32_t word : number->words) {
        const Bytes part = bytesOf(word);
        bytes.insert(bytes.end(), part.begin(), part.end());
    }
    return bytes;
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
    return {format.columnCountSize + table.fixedSize, (table.maxColumns + std::size_t{7}) / 8};
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

void appendOffsets(Bytes& row, const std::vector<std::size_t>& positions, std::size_t maskSize,
                   bool isJet3) {
    const std::size_t variables = positions.size() - 1;
    if (!isJet3) {
        const auto append = [&](std::size_t number) {
            const Bytes two = bytesOf(static_cast<std::uint16_t>(number));
            row.insert(row.end(), two.begin(), two.end());
        };
        std::for_each(positions.rbegin(), positions.rend(), append);
        append(variables);
        return;
    }
    const Bytes jumps = jumpTable(positions, row.size() + positions.size() + 1 + maskSize);
    for (auto at = positions.rbegin(); at != positions.rend(); ++at)
        row.push_back(static_cast<std::byte>(*at & 0xFF));
    row.insert(row.end(), jumps.rbegin(), jumps.rend());
    row.push_back(static_cast<std::byte>(variables));
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
    if (format.columnCountSize == 1)
        store<std::uint8_t>(row.data(), static_cast<std::uint8_t>(table.maxColumns));
    else
        store<std::uint16_t>(row.data(), table.maxColumns);

    std::vector<const Bytes*> variables(table.maxVariables);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const Column& column = table.columns[i];
        if (!fields[i].present)
            continue;
        mask[column.number / 8] |= static_cast<std::byte>(1U << (column.number % 8));
        if (column.type == ColumnType::boolean)
            continue;
        if (column.fixed)
            std::copy(fields[i].bytes.begin(), fields[i].bytes.end(),
                      row.begin() +
                          static_cast<std::ptrdiff_t>(format.columnCountSize + column.fixedOffset));
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
        appendOffsets(row, positions, maskSize, format.isJet3());
    } else if (row.size() + maskSize < kSmallestRow) {
        row.resize(kSmallestRow - maskSize);
    }
    row.insert(row.end(), mask.begin(), mask.end());
    if (row.size() > format.largestRow)
        throw Error(Errc::tooLong, "O registro é grande demais para o banco de dados.");
    return row;
}

std::size_t rowSize(const Format& format, const TableDefinition& table, const StoredRow& fields,
                    bool inRow) {
    const auto [fixedEnd, maskSize] = layoutOf(format, table);
    std::size_t size = fixedEnd + maskSize;
    if (table.maxVariables > 0)
        size += (table.maxVariables + std::size_t{2}) * format.columnCountSize;
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
