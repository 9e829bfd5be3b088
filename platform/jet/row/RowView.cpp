#include "jet/row/RowView.h"

#include "jet/Numbers.h"
#include "jet/row/LongValues.h"
#include "jet/row/RowOffsets.h"
#include "jet/row/StoredNumeric.h"

namespace jet {

namespace {

template <class T>
T scalar(std::span<const std::byte> bytes, PageNo page) {
    if (bytes.size() != sizeof(T))
        corrupt(page, "um valor não tem o tamanho do seu tipo");
    return load<T>(bytes.data());
}

std::int64_t integerOf(ColumnType type, std::span<const std::byte> bytes, PageNo page) {
    switch (type) {
    case ColumnType::byte:
        return scalar<std::uint8_t>(bytes, page);
    case ColumnType::integer:
        return scalar<std::int16_t>(bytes, page);
    default:
        return scalar<std::int32_t>(bytes, page);
    }
}

double realOf(ColumnType type, std::span<const std::byte> bytes, PageNo page) {
    return type == ColumnType::single ? asWritten(scalar<float>(bytes, page))
                                      : scalar<double>(bytes, page);
}

Numeric numericOf(const Column& column, std::span<const std::byte> bytes, PageNo page) {
    if (bytes.size() != StoredNumeric::size)
        corrupt(page, "um valor não tem o tamanho do seu tipo");
    return StoredNumeric::read(bytes, column.scale);
}

Guid guidOf(std::span<const std::byte> bytes, PageNo page) {
    Guid value;
    if (bytes.size() != value.bytes.size())
        corrupt(page, "um valor não tem o tamanho do seu tipo");
    std::copy(bytes.begin(), bytes.end(), value.bytes.begin());
    return value;
}

} // namespace

void RowView::place(Pager& pager, const TableDefinition& definition,
                    std::span<const std::byte> bytes, PageNo page) {
    pager_ = &pager;
    refreshes_ = pager.refreshes();
    definition_ = &definition;
    bytes_ = bytes;
    page_ = page;
    const RowLayout& layout = pager.format().row;
    base_ = layout.countSize;
    if (bytes.size() < base_)
        corrupt(page, "uma linha está vazia");
    // Fewer than the table has in a row that is older than the last columns.
    count_ = load(bytes.data(), layout.count());
    const std::size_t mask = RowLayout::maskSize(count_);
    if (count_ > definition.maxColumns || base_ + mask > bytes.size())
        corrupt(page, "uma linha tem mais colunas do que a tabela");
    maskAt_ = bytes.size() - mask;
}

Bytes RowView::longValue(std::span<const std::byte> definition) const {
    return pager_->onSnapshot([&] {
        // The row's own bytes are held; the pages of its long values may be another row's by now.
        if (refreshes_ != pager_->refreshes() &&
            LongValueDefinition::parse(definition, page_).kind != LongValueDefinition::Kind::inRow)
            throw Error(Errc::conflict, "O registro foi alterado por outra estação enquanto era "
                                        "lido. Localize-o outra vez.");
        return readLongValue(*pager_, definition, page_);
    });
}

std::pair<std::size_t, std::size_t> RowView::extent(std::size_t index) const {
    const RowOffsets offsets(pager_->format(), bytes_, maskAt_);
    if (!offsets.hasCount())
        corrupt(page_, "a tabela de posições de uma linha não cabe nela");
    if (index >= offsets.count())
        return {0, 0};
    if (!offsets.fit())
        corrupt(page_, "a tabela de posições de uma linha não cabe nela");
    return {offsets[index], offsets[index + 1]};
}

std::span<const std::byte> RowView::fixedField(const Column& column) const {
    const std::size_t at = base_ + column.fixedOffset;
    if (at + column.length > maskAt_)
        corrupt(page_, "uma linha é mais curta do que as suas colunas");
    return {bytes_.data() + at, column.length};
}

std::optional<std::span<const std::byte>> RowView::variableField(const Column& column) const {
    const auto [begin, end] = extent(column.variableIndex);
    if (begin == 0 && end == 0)
        return std::nullopt; // the column is younger than the row
    if (begin < base_ || begin > end || end > maskAt_)
        corrupt(page_, "um valor está fora da sua linha");
    return bytes_.subspan(begin, end - begin);
}

std::optional<std::span<const std::byte>> RowView::field(const Column& column) const {
    if (!bit(column))
        return std::nullopt;
    return column.fixed ? fixedField(column) : variableField(column);
}

bool RowView::boolean(std::size_t column) const { return bit(definition_->columns[column]); }

std::int64_t RowView::integer(std::size_t column) const {
    const Column& c = definition_->columns[column];
    const auto bytes = field(c);
    return bytes ? integerOf(c.type, *bytes, page_) : 0;
}

Currency RowView::currency(std::size_t column) const {
    const auto bytes = field(definition_->columns[column]);
    return {bytes ? scalar<std::int64_t>(*bytes, page_) : 0};
}

double RowView::real(std::size_t column) const {
    const Column& c = definition_->columns[column];
    const auto bytes = field(c);
    return bytes ? realOf(c.type, *bytes, page_) : 0;
}

Date RowView::date(std::size_t column) const {
    const auto bytes = field(definition_->columns[column]);
    return {bytes ? scalar<double>(*bytes, page_) : 0};
}

std::string_view RowView::text(std::size_t column, std::string& buffer) const {
    const Column& c = definition_->columns[column];
    buffer.clear();
    if (const auto bytes = field(c)) {
        if (c.type == ColumnType::memo)
            c.codec.decodeTo(buffer, longValue(*bytes));
        else
            c.codec.decodeTo(buffer, *bytes);
    }
    return buffer;
}

std::span<const std::byte> RowView::stored(std::size_t column) const {
    return field(definition_->columns[column]).value_or(std::span<const std::byte>());
}

Value RowView::value(std::size_t column) const {
    const Column& c = definition_->columns[column];
    if (c.type == ColumnType::boolean)
        return bit(c);
    const auto bytes = field(c);
    if (!bytes)
        return {};
    switch (c.type) {
    case ColumnType::byte:
    case ColumnType::integer:
    case ColumnType::longInteger:
        return integerOf(c.type, *bytes, page_);
    case ColumnType::currency:
        return Currency{scalar<std::int64_t>(*bytes, page_)};
    case ColumnType::single:
    case ColumnType::real:
        return realOf(c.type, *bytes, page_);
    case ColumnType::date:
        return Date{scalar<double>(*bytes, page_)};
    case ColumnType::text:
        return c.codec.decode(*bytes);
    case ColumnType::memo:
        return c.codec.decode(longValue(*bytes));
    case ColumnType::ole:
        return longValue(*bytes);
    case ColumnType::guid:
        return guidOf(*bytes, page_);
    case ColumnType::numeric:
        return numericOf(c, *bytes, page_);
    default:
        return Bytes(bytes->begin(), bytes->end());
    }
}

Row RowView::values() const {
    Row row;
    row.reserve(definition_->columns.size());
    for (std::size_t i = 0; i < definition_->columns.size(); ++i)
        row.push_back(value(i));
    return row;
}

} // namespace jet
