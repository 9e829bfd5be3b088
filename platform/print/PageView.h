#pragma once

#include "print/preview/PageMarks.h"

#include <QAbstractScrollArea>

/// The pages of a report below each other on a grey ground, white whatever the program's colours.
/// Each is painted from its rows when it is seen, and marked where it shows the text looked for.
/// What the mouse does with them is PageMouse's, how they are read aloud SpokenPages'.
class PageView final : public QAbstractScrollArea {
    Q_OBJECT
public:
    static constexpr int kLeastPercent = 10;
    static constexpr int kMostPercent = 800;

    enum class Zoom : unsigned char { percent, page, width };

    explicit PageView(Relatorio& report, QWidget* parent = nullptr);

    /// The page on show, from 1; of several the one that was gone to, or that stands highest.
    [[nodiscard]] int page() const noexcept { return page_; }
    /// Shows a page from its top; one that isn't there, the nearest that is.
    void goToPage(int page);
    void goToStart() { goToPage(1); }
    /// To where the last page's last text is seen: the total.
    void goToEnd();
    [[nodiscard]] bool isAtEnd() const;
    /// On by what is seen, or back: by whole pages where the window shows one, else all but a line.
    void turn(int times);

    /// 100 % is the size on paper.
    void setZoom(int percent);
    /// As large as a whole page, or its width, has room; also when the window's size changes.
    void fit(Zoom zoom);
    [[nodiscard]] Zoom zoom() const noexcept { return zoom_; }
    [[nodiscard]] int percent() const;

    /// Marks the text on the pages, and this hit more than the others; brings it into sight.
    void mark(const QString& text, const std::optional<ReportHit>& hit);
    [[nodiscard]] const std::optional<ReportHit>& hit() const noexcept { return marks_.hit(); }

    /// Where a page stands on the viewport, which need not show it.
    [[nodiscard]] QRect pageRect(int page) const;
    /// The place on the nearest page of a point of the viewport; nothing where there are no pages.
    [[nodiscard]] std::optional<TextSelection::Point> pointAt(QPoint point) const;

    [[nodiscard]] TextSelection& selection() noexcept { return marks_.selection(); }
    void markAll();

    /// The text of the page on show, a line for each that stands there; "" if there is none.
    [[nodiscard]] QString spokenPage() const;

    [[nodiscard]] QSize sizeHint() const override;

signals:
    /// Another page is on show, or there are more pages.
    void pageChanged();
    void zoomChanged();
    /// Ctrl and the wheel, a notch up or down.
    void zoomAsked(int steps);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    [[nodiscard]] qreal dotsPerInch() const;
    [[nodiscard]] QSize pageSize() const;
    /// From a page to the next, and where a page stands below the first's; in pixels.
    [[nodiscard]] int pitch() const;
    [[nodiscard]] int topOf(int page) const;
    [[nodiscard]] int pageAt(int height) const;
    void paintOne(QPainter& painter, int page);
    [[nodiscard]] int seenAtOnce() const;
    [[nodiscard]] int endOfText() const;
    void goTo(int page, int height);
    void reset();
    void rowsCame();
    void rowsReplaced();
    void refit();
    void setScale(qreal scale);
    void updateRanges();
    void showHit(const ReportHit& hit);

    Relatorio& report_;
    PageMarks marks_;
    Zoom zoom_ = Zoom::percent;
    qreal scale_ = 1;
    int page_ = 1;
    int pages_ = 0;      ///< as last told
    bool going_ = false; ///< to a page: scrolling there doesn't choose another
};
