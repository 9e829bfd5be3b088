#include "print/ReportSearch.h"

#include <QScopeGuard>

#include <algorithm>

namespace {

/// A text in the shape it is compared in, and where each of its characters stood.
struct Folded {
    QString text;
    std::vector<qsizetype> at;
};

/// Of whom the letter is, without case and accent.
QChar folded(QChar c) {
    if (c.unicode() < 0x80)
        return c.toLower();
    if (c.decompositionTag() == QChar::Canonical && !c.isSurrogate())
        c = c.decomposition().front();
    return c.toCaseFolded();
}

Folded fold(const QString& text, bool withoutPoints) {
    Folded result;
    result.text.reserve(text.size());
    result.at.reserve(static_cast<std::size_t>(text.size()));
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c.category() == QChar::Mark_NonSpacing || (withoutPoints && c == '.'))
            continue;
        result.text += folded(c);
        result.at.push_back(i);
    }
    return result;
}

/// What is looked for, in both shapes, and where it is in a report's fields. The footer counts as a
/// row after the last.
class Search {
public:
    Search(const Relatorio& report, const QString& text)
        : report_(report), text_(fold(text, false).text), number_(fold(text, true).text) {}

    [[nodiscard]] bool isEmpty() const { return text_.isEmpty(); }
    /// The one after the last that is searched.
    [[nodiscard]] qint64 end() const {
        return report_.rows().size() + (report_.isComplete() ? 1 : 0);
    }
    [[nodiscard]] qsizetype fieldsOf(qint64 row) const {
        const ReportLayout& layout = report_.layout();
        return static_cast<qsizetype>(
            (isFooter(row) ? layout.footer : layout.detail).fields.size());
    }

    /// As ReportRows::visit(); the footer has no values.
    void visit(qint64 first, qint64 end, const ReportRows::Work& work) const {
        const qint64 count = report_.rows().size();
        bool goOn = true;
        if (first < count)
            report_.rows().visit(first, std::min(end, count),
                                 [&](qint64 row, const std::vector<ReportValue>& values) {
                                     return goOn = work(row, values);
                                 });
        if (goOn && end > count)
            work(count, {});
    }

    [[nodiscard]] std::optional<ReportHit> in(qint64 row, qsizetype field,
                                              const std::vector<ReportValue>& values) const {
        if (isFooter(row)) {
            const ReportField& shown =
                report_.layout().footer.fields[static_cast<std::size_t>(field)];
            return in(row, field, report_.textOf(shown), shown.kind == FieldKind::computed);
        }
        const qsizetype column = report_.columnOf(field);
        const bool amount =
            column >= 0 && std::holds_alternative<Amount>(values[static_cast<std::size_t>(column)]);
        return in(row, field, report_.detailText(field, values), amount);
    }

private:
    [[nodiscard]] bool isFooter(qint64 row) const { return row == report_.rows().size(); }

    [[nodiscard]] std::optional<ReportHit> in(qint64 row, qsizetype field, const QString& text,
                                              bool amount) const {
        const QString& wanted = amount ? number_ : text_;
        if (wanted.isEmpty())
            return std::nullopt;
        const Folded shown = fold(text, amount);
        const qsizetype found = shown.text.indexOf(wanted);
        if (found < 0)
            return std::nullopt;
        const qsizetype start = shown.at[static_cast<std::size_t>(found)];
        const qsizetype last = shown.at[static_cast<std::size_t>(found + wanted.size() - 1)];
        return ReportHit{row, field, start, last + 1 - start};
    }

    const Relatorio& report_;
    QString text_;
    QString number_;
};

constexpr qint64 kRowsPerStep = 1024;

/// A place between the fields of a report: fields before it count as passed.
struct Place {
    qint64 row;
    qsizetype field;
};

/// The first (last) hit from `from` on (before it), within rows begin to end.
struct Walk {
    const Relatorio& report;
    const Search& search;
    const ReportProgress& progress;
    bool cancelled = false;

    std::optional<ReportHit> forward(Place from, qint64 end) {
        std::optional<ReportHit> hit;
        for (qint64 row = from.row; row < end && !hit && goOn(row); row += kRowsPerStep)
            search.visit(row, std::min(end, row + kRowsPerStep),
                         [&](qint64 at, const std::vector<ReportValue>& values) {
                             const qsizetype first = at == from.row ? from.field : 0;
                             for (qsizetype f = first; f < search.fieldsOf(at) && !hit; ++f)
                                 hit = search.in(at, f, values);
                             return !hit;
                         });
        return hit;
    }

    /// The last in the step counts, so each step is looked at to its end.
    std::optional<ReportHit> backward(Place from, qint64 begin) {
        std::optional<ReportHit> hit;
        for (qint64 end = from.row + 1; end > begin && !hit && goOn(search.end() - end);
             end -= kRowsPerStep)
            search.visit(std::max(begin, end - kRowsPerStep), end,
                         [&](qint64 at, const std::vector<ReportValue>& values) {
                             const qsizetype last =
                                 at == from.row ? from.field : search.fieldsOf(at);
                             for (qsizetype f = 0; f < last; ++f)
                                 if (const auto found = search.in(at, f, values))
                                     hit = found;
                             return true;
                         });
        return hit;
    }

private:
    bool goOn(qint64 done) {
        cancelled = cancelled || !progress(done, std::max(done, search.end()));
        return !cancelled;
    }
};

} // namespace

SearchResult findText(Relatorio& report, const QString& text, SearchDirection direction,
                      const std::optional<ReportHit>& from, qint64 start,
                      const ReportProgress& progress) {
    const Search search(report, text);
    if (search.isEmpty() || report.rows().size() == 0)
        return {};
    const Relatorio::Run run(report);
    if (!run)
        return {};
    Walk walk{report, search, progress};
    SearchResult result;
    bool replaced = false; // other rows than those searched already
    const auto watch =
        QObject::connect(&report, &Relatorio::rowsReplaced, [&] { replaced = true; });
    const auto unwatch = qScopeGuard([&] { QObject::disconnect(watch); });
    const auto takeRest = [&] {
        walk.cancelled = walk.cancelled || report.takeAll(run, progress) == RowsState::coming;
    };
    if (direction == SearchDirection::forward) {
        const Place begin = from ? Place{from->row, from->field + 1} : Place{start, 0};
        const qint64 known = search.end();
        result.hit = walk.forward(begin, known);
        if (!result.hit && report.state() == RowsState::coming) {
            takeRest();
            result.hit =
                walk.forward(replaced ? begin : Place{std::max(known, begin.row), 0}, search.end());
        }
        if (!result.hit && !walk.cancelled) {
            result.wrapped = true;
            result.hit = walk.forward({0, 0}, std::min(begin.row + 1, search.end()));
        }
    } else {
        const Place begin = from ? Place{from->row, from->field} : Place{start, 0};
        result.hit = walk.backward(begin, 0);
        if (!result.hit && !walk.cancelled) {
            takeRest();
            result.wrapped = true;
            if (!walk.cancelled)
                result.hit = walk.backward({search.end() - 1, search.fieldsOf(search.end() - 1)},
                                           replaced ? 0 : begin.row);
        }
    }
    result.cancelled = walk.cancelled;
    return result;
}

std::optional<HitCount> countHits(Relatorio& report, const QString& text, const ReportHit& hit,
                                  const ReportProgress& progress) {
    const Search search(report, text);
    const Relatorio::Run run(report);
    if (!run || report.takeAll(run, progress) == RowsState::coming)
        return std::nullopt;
    HitCount count;
    bool goOn = true;
    search.visit(0, search.end(), [&](qint64 row, const std::vector<ReportValue>& values) {
        for (qsizetype f = 0; f < search.fieldsOf(row); ++f)
            if (search.in(row, f, values)) {
                ++count.all;
                if (row < hit.row || (row == hit.row && f <= hit.field))
                    ++count.until;
            }
        if (row % kRowsPerStep == 0)
            goOn = progress(row, search.end());
        return goOn;
    });
    return goOn ? std::optional(count) : std::nullopt;
}

std::vector<ReportHit> hitsOnPage(const Relatorio& report, const QString& text, int page) {
    const Search search(report, text);
    std::vector<ReportHit> hits;
    if (search.isEmpty())
        return hits;
    const Relatorio::Rows rows = report.rowsOf(page);
    const qint64 end = page == report.pageCount() ? search.end() : rows.end;
    search.visit(rows.first, end, [&](qint64 row, const std::vector<ReportValue>& values) {
        for (qsizetype f = 0; f < search.fieldsOf(row); ++f)
            if (const auto hit = search.in(row, f, values))
                hits.push_back(*hit);
        return true;
    });
    return hits;
}
