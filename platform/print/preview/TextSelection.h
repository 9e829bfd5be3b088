#pragma once

#include "print/Relatorio.h"

/// What is marked of a report on show, to be copied: from one character of its pages to another, in
/// the order of reading, or all. Lasts until the report's pages change.
class TextSelection {
public:
    explicit TextSelection(Relatorio& report) : report_(report) {}

    /// A place on a page, in millimetres from its paper's upper left corner.
    struct Point {
        int page;
        QPointF place;
    };
    /// Whether a text stands there.
    [[nodiscard]] bool isOnText(const Point& point) const;

    /// Nothing is marked yet; extend() marks from here.
    void begin(const Point& point);
    void extend(const Point& point);
    /// Also what is still to come.
    void markAll();
    void clear();
    [[nodiscard]] bool isAll() const noexcept { return all_; }
    [[nodiscard]] bool isEmpty() const { return !all_ && from_ == to_; }

    /// What is marked on a page, in millimetres as above.
    [[nodiscard]] std::vector<QRectF> placesOn(int page) const;
    /// The marked texts: a tab between the fields of a line, header and headings only where they
    /// are marked first, as a spreadsheet wants them.
    [[nodiscard]] QString text() const;

private:
    /// A place between the characters of a page.
    struct Mark {
        int page = 1;
        std::size_t text = 0;    ///< index among the page's texts
        qsizetype character = 0; ///< the one behind it
        friend auto operator<=>(const Mark&, const Mark&) = default;
    };
    struct Part {
        Relatorio::Text text;
        qsizetype start;
        qsizetype length;
    };

    [[nodiscard]] Mark markAt(const Point& point) const;
    [[nodiscard]] std::vector<Part> partsOn(int page) const;

    Relatorio& report_;
    bool all_ = false;
    Mark from_;
    Mark to_; ///< may be before `from_`
};
