#include "print/preview/TextSelection.h"

#include <algorithm>

namespace {

constexpr qreal kNear = 0.8; ///< millimetres beside a text that still count as it

} // namespace

bool TextSelection::isOnText(const Point& point) const {
    return std::ranges::any_of(report_.textsOf(point.page), [&](const Relatorio::Text& text) {
        return !text.text.isEmpty() && report_.placeOf(text, 0, text.text.size())
                                           .adjusted(-kNear, 0, kNear, 0)
                                           .contains(point.place);
    });
}

/// In or behind the last text that begins before the point.
TextSelection::Mark TextSelection::markAt(const Point& point) const {
    Mark mark{point.page};
    const std::vector<Relatorio::Text> texts = report_.textsOf(point.page);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const QRectF place = texts[i].place();
        if (place.bottom() < point.place.y())
            mark = {point.page, i, texts[i].text.size()};
        else if (place.top() <= point.place.y() && place.left() - kNear <= point.place.x())
            mark = {point.page, i, report_.characterAt(texts[i], point.place)};
    }
    return mark;
}

void TextSelection::begin(const Point& point) {
    all_ = false;
    from_ = to_ = markAt(point);
}

void TextSelection::extend(const Point& point) { to_ = markAt(point); }

void TextSelection::markAll() { all_ = true; }

void TextSelection::clear() {
    all_ = false;
    from_ = to_ = {};
}

std::vector<TextSelection::Part> TextSelection::partsOn(int page) const {
    const auto [first, last] = std::minmax(from_, to_);
    if (isEmpty() || (!all_ && (page < first.page || page > last.page)))
        return {};
    std::vector<Part> parts;
    const std::vector<Relatorio::Text> texts = report_.textsOf(page);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const qsizetype size = texts[i].text.size();
        const auto within = [&](const Mark& mark) {
            const Mark here{page, i, 0};
            return mark < here ? 0 : mark > Mark{page, i, size} ? size : mark.character;
        };
        const qsizetype start = all_ ? 0 : within(first);
        const qsizetype end = all_ ? size : within(last);
        // What is empty stands between what is marked, to keep its column.
        const bool between = all_ || (first <= Mark{page, i, 0} && Mark{page, i, size} <= last);
        if (end > start || (size == 0 && between))
            parts.push_back({texts[i], start, end - start});
    }
    return parts;
}

std::vector<QRectF> TextSelection::placesOn(int page) const {
    std::vector<QRectF> places;
    for (const Part& part : partsOn(page))
        if (part.length > 0)
            places.push_back(report_.placeOf(part.text, part.start, part.length));
    return places;
}

QString TextSelection::text() const {
    const auto [first, last] = std::minmax(from_, to_);
    const int begin = all_ ? 1 : first.page;
    const int end = all_ ? report_.pageCount() : last.page;
    QString copy;
    QRectF before;
    for (int page = begin; page <= end && !isEmpty(); ++page)
        for (const Part& part : partsOn(page)) {
            if (page > begin && part.text.repeated)
                continue;
            const QRectF place = part.text.place();
            const bool sameLine = place.top() < before.bottom() && place.bottom() > before.top() &&
                                  place.left() >= before.right();
            if (!before.isNull())
                copy += sameLine ? '\t' : '\n';
            copy += QStringView(part.text.text).sliced(part.start, part.length);
            before = place;
        }
    return copy;
}
