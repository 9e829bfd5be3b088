#include "jet/index/KeyCodec.h"

#include "jet/row/StoredNumeric.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <string>

namespace jet {

namespace {

constexpr std::byte kAll{0xFF};

[[noreturn]] void wrongType() {
    throw Error(Errc::misuse, "Erro interno: um valor de outro tipo foi dado a uma coluna de um "
                              "índice.");
}

[[noreturn]] void notIndexable(ColumnType type) {
    throw Error(Errc::unsupported, "Uma coluna do tipo " + std::to_string(static_cast<int>(type)) +
                                       " não pode fazer parte de um índice.");
}

void appendFlag(Bytes& key, bool ascending) {
    key.push_back(ascending ? std::byte{0x7F} : std::byte{0x80});
}

void complement(std::span<std::byte> bytes) noexcept {
    for (std::byte& byte : bytes)
        byte = ~byte;
}

/// The lowest `size` bytes of `bits`, highest first.
void appendBits(Bytes& key, bool ascending, std::uint64_t bits, std::size_t size) {
    if (!ascending)
        bits = ~bits;
    for (std::size_t i = size; i-- > 0;)
        key.push_back(static_cast<std::byte>(bits >> (8 * i)));
}

template <class Integer>
void appendInteger(Bytes& key, bool ascending, Integer value) {
    const auto bits = static_cast<std::make_unsigned_t<Integer>>(value);
    const auto low = std::numeric_limits<Integer>::min(); // the sign bit of a signed type
    appendBits(key, ascending, bits ^ static_cast<std::make_unsigned_t<Integer>>(low),
               sizeof value);
}

/// Of a float's or a double's bits. Works on them as they are: no value changes on its way.
template <class Bits>
void appendReal(Bytes& key, bool ascending, Bits bits) {
    constexpr Bits kSign = Bits{1} << (8 * sizeof(Bits) - 1);
    appendBits(key, ascending, (bits & kSign) != 0 ? Bits(~bits) : Bits(bits | kSign), sizeof bits);
}

/// Pieces of eight bytes, each followed by 9, but the last by its length.
void appendBinary(Bytes& key, bool ascending, std::span<const std::byte> bytes) {
    constexpr std::size_t kPiece = 8;
    while (!bytes.empty()) {
        const bool isLast = bytes.size() <= kPiece;
        const auto piece = bytes.first(std::min(bytes.size(), kPiece));
        bytes = bytes.subspan(piece.size());
        const std::size_t start = key.size();
        key.insert(key.end(), piece.begin(), piece.end());
        key.resize(start + kPiece);
        key.push_back(static_cast<std::byte>(isLast ? piece.size() : kPiece + 1));
        if (!ascending) // the 9 that says "more follows" stays as it is
            complement(std::span(key).subspan(start, isLast ? kPiece + 1 : kPiece));
    }
}

void appendGuid(Bytes& key, bool ascending, std::span<const std::byte> stored) {
    // Where the bytes of the printed form lie among the stored ones.
    constexpr std::size_t kPrinted[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    std::array<std::byte, std::size(kPrinted)> printed{};
    std::ranges::transform(kPrinted, printed.begin(), [&](std::size_t i) { return stored[i]; });
    appendBinary(key, ascending, printed);
}

/// Kept: the format leaves the sign byte as it is in a descending column, so that such an index has
/// the negative numbers first. Every program that shares the file expects it so.
void appendNumeric(Bytes& key, bool ascending, const Numeric& value) {
    key.push_back(value.negative ? std::byte{0} : kAll);
    const std::size_t start = key.size();
    for (const std::uint32_t word : value.words)
        appendBits(key, true, word, sizeof word);
    if (value.negative == ascending)
        complement(std::span(key).subspan(start));
}

/// `source` is UTF-8 or stored bytes: whatever the codec has units of.
template <class Source>
void appendText(Bytes& key, const Column& column, bool ascending, const Source& source) {
    if (column.collation == nullptr)
        throw Error(Errc::misuse, "Erro interno: a ordem do texto de um índice não é conhecida.");
    std::array<char16_t, Collation::kKeyUnits> units;
    const std::size_t count = column.codec.unitsOf(source, units);
    const std::size_t start = key.size();
    column.collation->appendKey(key, {units.data(), count});
    if (ascending)
        return;
    complement(std::span(key).subspan(start));
    if (column.collation->version() == Version::jet4) // Jet 3 adds nothing
        key.push_back(std::byte{0});
}

template <class Wanted>
const Wanted& get(const Value& value) {
    const auto* wanted = std::get_if<Wanted>(&value);
    if (wanted == nullptr)
        wrongType();
    return *wanted;
}

template <class Integer>
Integer narrowed(const Value& value) {
    const auto wide = get<std::int64_t>(value);
    if (wide < std::numeric_limits<Integer>::min() || wide > std::numeric_limits<Integer>::max())
        throw Error(Errc::outOfRange,
                    "O número " + std::to_string(wide) + " não cabe na coluna do banco de dados.");
    return static_cast<Integer>(wide);
}

template <class Stored>
Stored loaded(std::span<const std::byte> stored) {
    if (stored.size() != sizeof(Stored))
        throw Error(Errc::corrupt, "O banco de dados está danificado: um campo tem " +
                                       std::to_string(stored.size()) + " bytes em vez de " +
                                       std::to_string(sizeof(Stored)) + ".");
    return load<Stored>(stored.data());
}

} // namespace

void appendNullKey(Bytes& key, bool ascending) { key.push_back(ascending ? std::byte{0} : kAll); }

void appendBooleanKey(Bytes& key, bool ascending, bool value) {
    appendFlag(key, ascending);
    appendBits(key, ascending, value ? 0x00 : 0xFF, 1);
}

void appendKey(Bytes& key, const Column& column, bool ascending, const Value& value) {
    if (column.type == ColumnType::boolean)
        return appendBooleanKey(key, ascending, get<bool>(value));
    if (isNull(value))
        return appendNullKey(key, ascending);
    appendFlag(key, ascending);
    switch (column.type) {
    case ColumnType::boolean:
    case ColumnType::ole:
        break;
    case ColumnType::byte:
        return appendInteger(key, ascending, narrowed<std::uint8_t>(value));
    case ColumnType::integer:
        return appendInteger(key, ascending, narrowed<std::int16_t>(value));
    case ColumnType::longInteger:
        return appendInteger(key, ascending, narrowed<std::int32_t>(value));
    case ColumnType::currency:
        return appendInteger(key, ascending, get<Currency>(value).tenThousandths);
    case ColumnType::single:
        return appendReal(key, ascending,
                          std::bit_cast<std::uint32_t>(static_cast<float>(get<double>(value))));
    case ColumnType::real:
        return appendReal(key, ascending, std::bit_cast<std::uint64_t>(get<double>(value)));
    case ColumnType::date:
        return appendReal(key, ascending, std::bit_cast<std::uint64_t>(get<Date>(value).days));
    case ColumnType::binary:
        return appendBinary(key, ascending, get<Bytes>(value));
    case ColumnType::text:
    case ColumnType::memo:
        return appendText(key, column, ascending, std::string_view(get<std::string>(value)));
    case ColumnType::guid:
        return appendGuid(key, ascending, get<Guid>(value).bytes);
    case ColumnType::numeric: {
        const auto& numeric = get<Numeric>(value);
        if (numeric.scale != column.scale)
            wrongType();
        return appendNumeric(key, ascending, numeric);
    }
    }
    notIndexable(column.type);
}

void appendStoredKey(Bytes& key, const Column& column, bool ascending,
                     std::span<const std::byte> stored) {
    appendFlag(key, ascending);
    switch (column.type) {
    case ColumnType::boolean:
        wrongType();
    case ColumnType::ole:
        break;
    case ColumnType::byte:
        return appendInteger(key, ascending, loaded<std::uint8_t>(stored));
    case ColumnType::integer:
        return appendInteger(key, ascending, loaded<std::int16_t>(stored));
    case ColumnType::longInteger:
        return appendInteger(key, ascending, loaded<std::int32_t>(stored));
    case ColumnType::currency:
        return appendInteger(key, ascending, loaded<std::int64_t>(stored));
    case ColumnType::single:
        return appendReal(key, ascending, loaded<std::uint32_t>(stored));
    case ColumnType::real:
    case ColumnType::date:
        return appendReal(key, ascending, loaded<std::uint64_t>(stored));
    case ColumnType::binary:
        return appendBinary(key, ascending, stored);
    case ColumnType::text:
    case ColumnType::memo:
        return appendText(key, column, ascending, stored);
    case ColumnType::guid: {
        const auto guid = loaded<std::array<std::byte, 16>>(stored);
        return appendGuid(key, ascending, guid);
    }
    case ColumnType::numeric: {
        const auto bytes = loaded<std::array<std::byte, StoredNumeric::size>>(stored);
        return appendNumeric(key, ascending, StoredNumeric::read(bytes, column.scale));
    }
    }
    notIndexable(column.type);
}

} // namespace jet
