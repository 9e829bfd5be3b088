#pragma once

#include "ado/Text.h"
#include "jet/Types.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ado {

using jet::Currency;
using jet::Date;
using jet::Value;

class Recordset;

/// A character that a column has no way to store, in a text.
struct Unstorable {
    std::size_t at;    ///< bytes of UTF-8 before it
    std::size_t bytes; ///< that it has itself
};

/// One field of the current row of a recordset, for reading. A place, not a copy: each question is
/// answered from the row as it is stored now, or from the pending edit. Valid until its recordset
/// is opened again, closed or destroyed.
///
/// Every question throws Error{noCurrentRow} when the recordset stands on no row, Error{conflict}
/// when the row has been deleted by another meanwhile, and Error{misuse} when it is closed.
class FieldValue {
public:
    /// What is stored, exact. Computed columns give null, int64_t, double, std::string or Bytes.
    [[nodiscard]] Value value() const;
    [[nodiscard]] bool isNull() const;
    /// As the operator would read it: null is "", a number its digits with a decimal comma ("104",
    /// "1234,5"), an amount the same with at least two decimals ("1234,50"), a date "31/12/2024"
    /// (with " 08:30:00" when it has a time of day), yes/no "Verdadeiro" or "Falso".
    [[nodiscard]] std::string text() const;
    /// A whole number; null is 0, yes is -1. Amounts and numbers are rounded to the nearest, half
    /// away from zero. @throws Error{outOfRange} for what isn't a number.
    [[nodiscard]] std::int64_t integer() const;
    /// An amount; null is 0. Of a computed column the nearest 1/10000 (see SqlFunctions.h on
    /// sums).
    /// @throws Error{outOfRange} for what isn't a number.
    [[nodiscard]] Currency currency() const;
    /// A number; null is 0. Not for money. @throws Error{outOfRange} for what isn't a number.
    [[nodiscard]] double number() const;
    /// A moment; null is day 0 (1899-12-30): ask isNull() first. A number counts as days.
    /// @throws Error{outOfRange} for what isn't a date.
    [[nodiscard]] Date date() const;
    /// Null is false, a number true unless it is 0. @throws Error{outOfRange} for other types.
    [[nodiscard]] bool boolean() const;

    /// The name that the table gives it, or the statement.
    [[nodiscard]] const std::string& name() const;
    /// How many characters the column may hold; nothing for a memo, for what isn't text and for
    /// computed columns. Needs no current row, like name() and refusal().
    [[nodiscard]] std::optional<std::size_t> DefinedSize() const;
    /// Whether the file numbers the column in new rows by itself. Needs no current row either.
    [[nodiscard]] bool isNumbered() const;
    /// Why the column can't hold a text, as a sentence for the operator: too long, a character that
    /// the file has no way to store, not a value of its type, or one that the file's rules for the
    /// column refuse. Nothing if it can.
    [[nodiscard]] std::optional<std::string> refusal(const Text& text) const;
    /// The first character of a text that the column can't store, whatever else keeps it from
    /// being stored: one that is missing from the file's code page. Nothing if it is no text
    /// column.
    [[nodiscard]] std::optional<Unstorable> unstorable(std::string_view utf8) const;
    /// refusal() of an amount, by the column's type alone.
    [[nodiscard]] std::optional<std::string> refusal(Currency amount) const;

protected:
    friend class Recordset;
    FieldValue(const Recordset& recordset, std::size_t column)
        : recordset_(&recordset), column_(column) {}

    const Recordset* recordset_;
    std::size_t column_;
};

/// One field of the current row of a recordset, for reading and writing.
///
/// An assignment begins the editing of the row if there is none yet; nothing is stored before
/// Recordset::Update(). The value is converted to the column's type at once:
///  - text to a number: digits, with or without sign and blanks around; a decimal comma, with
///    points between thousands, or a decimal point ("104", "1.234,56", "1234.56");
///  - text to a date: day/month/year, with or without a time; text to yes/no: see WrittenForm.h;
///  - numbers among each other where nothing is lost; a number or a date to text as text() shows
///    it.
/// An empty text is null in a column of which the file says that it takes none.
/// @throws Error{outOfRange} when the value doesn't fit (empty text is no number),
///         Error{noCurrentRow}, Error{readOnly} when the recordset can't be changed, Error{misuse}
///         when it is closed.
class Field final : public FieldValue {
public:
    Field(const Field&) = default;

    /// Null.
    Field& operator=(std::nullptr_t) { return assign(Value{}); }
    template <std::same_as<bool> Bool> // exactly bool: a pointer isn't a yes/no
    Field& operator=(Bool yes) {
        return assign(Value{yes});
    }
    template <std::integral Integer>
    requires(!std::same_as<Integer, bool>) Field& operator=(Integer number) {
        return assign(Value{static_cast<std::int64_t>(number)});
    }
    Field& operator=(double number) { return assign(Value{number}); }
    Field& operator=(Currency amount) { return assign(Value{amount}); }
    Field& operator=(Date moment) { return assign(Value{moment}); }
    Field& operator=(const Text& text) { return assign(Value{text.utf8()}); }
    template <std::same_as<Value> Exactly> // what could become a Value is taken as what it is
    Field& operator=(const Exactly& value) {
        return assign(value);
    }
    /// The value of another field, not the place.
    Field& operator=(const FieldValue& other) { return assign(other.value()); }
    Field& operator=(const Field& other) { return this == &other ? *this : assign(other.value()); }

private:
    friend class Recordset;
    Field(Recordset& recordset, std::size_t column)
        : FieldValue(recordset, column), target_(&recordset) {}
    Field& assign(const Value& value);

    Recordset* target_;
};

} // namespace ado
