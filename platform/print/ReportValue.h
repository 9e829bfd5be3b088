#pragma once

#include "controls/typing/Formato.h"

#include <QDate>
#include <QString>
#include <QStringList>

#include <optional>
#include <variant>
#include <vector>

/// The values that reports are made of, and how they are written on paper.

/// Null, text, date, amount (in 1/10000) or whole number. An invalid date counts as null.
using ReportValue = std::variant<std::monostate, QString, QDate, Amount, qint64>;

/// How a field writes its value. By names "Short Date" and "Standard" in layouts; "" for general.
enum class ValueFormat : unsigned char {
    general,   ///< text as it is, dates day/month/year, amounts without losing a decimal
    shortDate, ///< dates day/month/year, all else as general
    standard,  ///< amounts and whole numbers as 1.234,56, all else as general
};

/// @return nothing if no format has that name.
[[nodiscard]] std::optional<ValueFormat> formatNamed(const QString& name);

/// The value as it stands on paper, whatever the machine's locale; "" for null. One line: control
/// characters, tabs and line breaks become blanks, marks that turn the direction of writing and
/// piles of accents go.
[[nodiscard]] QString shown(const ReportValue& value, ValueFormat format);

/// A row of a report as its detail event tells it; valid during the event.
class ReportRow {
public:
    ReportRow(const QStringList& columns, const std::vector<ReportValue>& values)
        : columns_(columns), values_(values) {}

    /// The value of a column, which must be one of the source's; case and blanks at the end of the
    /// name don't count.
    [[nodiscard]] const ReportValue& operator[](const QString& column) const;

private:
    const QStringList& columns_;
    const std::vector<ReportValue>& values_;
};

/// The place of a column's name among the names; -1 if it isn't there. Case and blanks at the end
/// don't count.
[[nodiscard]] qsizetype columnNamed(const QStringList& columns, const QString& name);
