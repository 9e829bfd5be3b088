#include "print/preview/ReportFinder.h"

#include "controls/window/Failure.h"
#include "print/PageView.h"
#include "print/output/ProgressWindow.h"
#include "print/preview/WidgetKeys.h"

#include <functional>

namespace {

constexpr int kWidth = 24; ///< characters

} // namespace

ReportFinder::ReportFinder(Relatorio& report, PageView& view, QWidget* parent)
    : QLineEdit(parent), report_(report), view_(view) {
    setObjectName("find");
    setAccessibleName("Localizar");
    setPlaceholderText("Localizar");
    setToolTip("Localizar nas linhas e no total do relatório (Ctrl+F)");
    setClearButtonEnabled(true);
    setMaximumWidth(fontMetrics().averageCharWidth() * kWidth);
    connectGuarded(this, &QLineEdit::textChanged, this, &ReportFinder::changed);
    connectGuarded(&report_, &Relatorio::rowsReplaced, this, &ReportFinder::forget);
    addKeys(*this, {Qt::Key_Return, Qt::Key_Enter}, [this] { findNext(); });
    addKeys(*this, {Qt::SHIFT | Qt::Key_Return, Qt::SHIFT | Qt::Key_Enter},
            [this] { findPrevious(); });
    addKeys(*this, {Qt::Key_Escape}, [this] {
        clear();
        emit left();
    });
}

void ReportFinder::enter() {
    setFocus(Qt::ShortcutFocusReason);
    selectAll();
}

void ReportFinder::changed() {
    view_.mark(text(), std::nullopt);
    forget();
    emit said("");
}

void ReportFinder::forget() {
    count_.reset();
    emit counted("");
}

/// Hits follow each other: only the first one's place among them takes a look at all rows.
void ReportFinder::count(const ReportHit& hit, SearchDirection direction,
                         const ReportProgress& progress) {
    if (!count_)
        count_ = countHits(report_, text(), hit, progress);
    else if (direction == SearchDirection::forward)
        count_->until = count_->until % count_->all + 1;
    else
        count_->until = count_->until == 1 ? count_->all : count_->until - 1;
}

void ReportFinder::findNext() { find(SearchDirection::forward); }
void ReportFinder::findPrevious() { find(SearchDirection::backward); }

void ReportFinder::find(SearchDirection direction) {
    if (text().isEmpty())
        return enter();
    const SearchResult result = [&] {
        ProgressWindow progress(window(), "Procurando no relatório", "linha", patienceMs_);
        const SearchResult found = findText(report_, text(), direction, view_.hit(),
                                            report_.rowsOf(view_.page()).first, std::ref(progress));
        if (found.hit)
            count(*found.hit, direction, std::ref(progress));
        return found;
    }();
    if (result.hit)
        view_.mark(text(), result.hit);
    if (count_)
        emit counted(QString("%1 de %2").arg(formatCount(count_->until), formatCount(count_->all)));
    if (result.cancelled)
        emit said("A busca foi cancelada.");
    else if (!result.hit && report_.state() == RowsState::failed)
        emit said(QString("\"%1\" não foi encontrado nas linhas lidas; o relatório está "
                          "incompleto.")
                      .arg(text()));
    else if (!result.hit)
        emit said(QString("\"%1\" não foi encontrado nas linhas do relatório.").arg(text()));
    else if (!result.wrapped)
        emit said("");
    else
        emit said(direction == SearchDirection::forward
                      ? "A busca chegou ao fim do relatório e continuou do início."
                      : "A busca chegou ao início do relatório e continuou do fim.");
}

#include "print/preview/moc_ReportFinder.cpp"
