#include "print/preview/ZoomBox.h"

#include "controls/window/Failure.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::array kPercents = {25, 50, 75, 100, 125, 150, 200, 300, 400};

} // namespace

ZoomBox::ZoomBox(PageView& view, QWidget* parent) : QComboBox(parent), view_(view) {
    setObjectName("zoom");
    setAccessibleName("Zoom");
    setToolTip("Zoom: página inteira (Ctrl+0), 100 % (Ctrl+1), largura da página (Ctrl+2)");
    addItem("Página inteira", 0);
    addItem("Largura da página", 0);
    for (const int percent : kPercents)
        addItem(QString("%1 %").arg(percent), percent);
    connectGuarded(this, &QComboBox::activated, this, &ZoomBox::choose);
    connectGuarded(&view_, &PageView::zoomChanged, this, &ZoomBox::showZoom);
    connectGuarded(&view_, &PageView::zoomAsked, this, &ZoomBox::step);
    showZoom();
}

void ZoomBox::step(int steps) {
    const int now = view_.percent();
    if (steps > 0) {
        const auto* larger = std::ranges::upper_bound(kPercents, now);
        view_.setZoom(larger == kPercents.end() ? kPercents.back() : *larger);
    } else {
        const auto* smaller = std::ranges::lower_bound(kPercents, now);
        view_.setZoom(smaller == kPercents.begin() ? kPercents.front() : *(smaller - 1));
    }
}

void ZoomBox::choose(int index) {
    if (const int percent = itemData(index).toInt())
        view_.setZoom(percent);
    else
        view_.fit(index == 0 ? PageView::Zoom::page : PageView::Zoom::width);
}

void ZoomBox::showZoom() {
    switch (view_.zoom()) {
    case PageView::Zoom::page:
        return setCurrentIndex(0);
    case PageView::Zoom::width:
        return setCurrentIndex(1);
    case PageView::Zoom::percent:
        return setCurrentIndex(findData(view_.percent()));
    }
}

#include "print/preview/moc_ZoomBox.cpp"
