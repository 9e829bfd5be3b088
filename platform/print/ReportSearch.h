#pragma once

#include "print/Relatorio.h"

#include <optional>

/// Finding a text in the details of a report and in its footer, as they stand on paper, those parts
/// too that are cut off there. Case and accents don't count; an amount is found with and without
/// the points between thousands.

/// A field that shows the text.
struct ReportHit {
    qint64 row;       ///< the one after the last: the footer, there once all rows have come
    qsizetype field;  ///< index among the detail band's fields, or the footer's
    qsizetype start;  ///< of the text within the field's
    qsizetype length; ///< in characters

    friend bool operator==(const ReportHit&, const ReportHit&) = default;
};

enum class SearchDirection : unsigned char { forward, backward };

struct SearchResult {
    std::optional<ReportHit> hit;
    bool wrapped = false;   ///< found, or not, after going on at the other end
    bool cancelled = false; ///< `progress` stopped it
};

/// The next field that shows `text` after (before) the hit `from`; without one, the first (last)
/// from the row `start` on. Goes on at the other end, back to where it began. Takes in all rows if
/// it needs them; of a report that has failed it searches those that have come.
[[nodiscard]] SearchResult findText(Relatorio& report, const QString& text,
                                    SearchDirection direction, const std::optional<ReportHit>& from,
                                    qint64 start, const ReportProgress& progress);

/// How many fields show `text`, and how many of them until `hit`, itself counted: all and the place
/// of a hit among them. Takes in all rows.
/// @return nothing if `progress` stopped it, or another report is at work.
struct HitCount {
    qint64 all = 0;
    qint64 until = 0;
};
[[nodiscard]] std::optional<HitCount> countHits(Relatorio& report, const QString& text,
                                                const ReportHit& hit,
                                                const ReportProgress& progress);

/// The hits on a page, in the order of reading.
[[nodiscard]] std::vector<ReportHit> hitsOnPage(const Relatorio& report, const QString& text,
                                                int page);
