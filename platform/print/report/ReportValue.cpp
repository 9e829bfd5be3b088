#include "print/ReportValue.h"

#include <algorithm>
#include <array>
#include <limits>

namespace {

constexpr std::int64_t kUnit = 10'000;
/// A letter has two marks at most in the scripts that use any; a pile of them would cover the rows
/// around.
constexpr int kMostMarks = 2;

struct NamedFormat {
    const char* name;
    ValueFormat format;
};

constexpr std::array<NamedFormat, 3> kFormats = {
    {{"", ValueFormat::general},
     {"Short Date", ValueFormat::shortDate},
     {"Standard", ValueFormat::standard}}
};

/// Marks that turn the direction of writing; in a name they would only hide what it says.
bool turnsDirection(QChar c) {
    return (c >= QChar(0x202A) && c <= QChar(0x202E)) ||
           (c >= QChar(0x2066) && c <= QChar(0x2069)) || c == QChar(0x200E) || c == QChar(0x200F);
}

bool breaksLine(QChar c) {
    return c.category() == QChar::Other_Control || c == QChar::LineSeparator ||
           c == QChar::ParagraphSeparator;
}

/// Printable and of Latin script: what nearly all texts consist of.
bool isPlain(QChar c) {
    return (c >= ' ' && c < QChar(0x7F)) || (c >= QChar(0xA0) && c < QChar(0x300));
}

QString oneLine(const QString& text) {
    if (std::ranges::all_of(text, isPlain))
        return text;
    QString line;
    line.reserve(text.size());
    int marks = 0; ///< above and below the last letter
    for (const QChar c : text) {
        const bool mark = c.isMark();
        marks = mark ? marks + 1 : 0;
        if (breaksLine(c))
            line += ' ';
        else if (!turnsDirection(c) && marks <= kMostMarks)
            line += c;
    }
    return line;
}

struct Printed {
    ValueFormat format;

    QString operator()(std::monostate) const { return {}; }
    QString operator()(const QString& text) const { return oneLine(text); }
    QString operator()(const QDate& date) const { return formatDate(date); }
    QString operator()(Amount amount) const {
        return format == ValueFormat::standard ? formatMoney(amount) : formatMoneyExactly(amount);
    }
    QString operator()(qint64 whole) const {
        constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max() / kUnit;
        // Beyond what an amount holds the number stands without its points.
        if (format == ValueFormat::standard && whole <= most && whole >= -most)
            return formatMoney({whole * kUnit});
        return QString::number(whole);
    }
};

} // namespace

std::optional<ValueFormat> formatNamed(const QString& name) {
    for (const NamedFormat& known : kFormats)
        if (name == QLatin1String(known.name))
            return known.format;
    return std::nullopt;
}

QString shown(const ReportValue& value, ValueFormat format) {
    return std::visit(Printed{format}, value);
}

const ReportValue& ReportRow::operator[](const QString& column) const {
    const qsizetype at = columnNamed(columns_, column);
    Q_ASSERT_X(at >= 0, "ReportRow", qUtf8Printable(column));
    return values_.at(static_cast<std::size_t>(at));
}

qsizetype columnNamed(const QStringList& columns, const QString& name) {
    const auto bare = [](QStringView text) {
        while (text.endsWith(' '))
            text.chop(1);
        return text;
    };
    const auto found = std::ranges::find_if(columns, [&](const QString& column) {
        return bare(column).compare(bare(name), Qt::CaseInsensitive) == 0;
    });
    return found == columns.end() ? -1 : found - columns.begin();
}
