#pragma once

#include "print/ReportSearch.h"
#include "print/preview/TextSelection.h"

/// What is marked on a report's pages, under their texts: what the mouse has marked to be copied,
/// the text looked for, and of its hits the current one more than the others.
class PageMarks {
public:
    explicit PageMarks(Relatorio& report) : report_(report), selection_(report) {}

    [[nodiscard]] TextSelection& selection() noexcept { return selection_; }
    [[nodiscard]] const std::optional<ReportHit>& hit() const noexcept { return hit_; }
    void look(const QString& text, const std::optional<ReportHit>& hit);

    /// Other rows stand on the pages: the text is still looked for.
    void forgetPlaces();
    void clear();

    /// Of a hit, in millimetres from its page's upper left corner.
    [[nodiscard]] QRectF placeOf(const ReportHit& hit) const;
    /// With the page's upper left corner at the painter's origin.
    void paint(QPainter& painter, int page, qreal dotsPerMm) const;

private:
    Relatorio& report_;
    TextSelection selection_;
    QString text_;
    std::optional<ReportHit> hit_;
};
