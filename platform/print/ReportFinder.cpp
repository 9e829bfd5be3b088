#include "print/ReportFinder.h"

#include "controls/Failure.h"
#include "print/PageView.h"
#include "print/ProgressWindow.h"

#include <QAction>

#include <functional>

namespace {

constexpr int kWidth = 24; ///< characters

} // namespace

ReportFinder::ReportFinder(Relatorio& report, PageView& view, QWidget* parent)
    : QLineEdit(parent), report_(report), view_(view) {
    setObjectName("find");
    setAccessibleName("Localizar");
    setPlaceholderText("Localizar");
    setToolTip("Localizar nas linhas do relatório (Ctrl+F)");
    setClearButtonEnabled(true);
    setMaximumWidth(fontMetrics().averageCharWidth() * kWidth);
    connectGuarded(this, &QLineEdit::textChanged, this, &ReportFinder::changed);
    const auto addKeys = [this](const QList<QKeySequence>& keys, void (ReportFinder::*handler)()) {
        auto* action = new QAction(this);
        action->setShortcuts(keys);
        action->setShortcutContext(Qt::WidgetShortcut);
        connectGuarded(action, &QAction::triggered, this, handler);
        addAction(action);
    };
    addKeys({Qt::Key_Return, Qt::Key_Enter}, &ReportFinder::findNext);
    addKeys({Qt::SHIFT | Qt::Key_Return, Qt::SHIFT | Qt::Key_Enter}, &ReportFinder::findPrevious);
    addKeys({Qt::Key_Escape}, &ReportFinder::leave);
}

void ReportFinder::enter() {
    setFocus(Qt::ShortcutFocusReason);
    selectAll();
}

void ReportFinder::leave() {
    clear();
    view_.setFocus();
}

void ReportFinder::changed() {
    view_.mark(text(), std::nullopt);
    emit said("");
}

void ReportFinder::findNext() { find(SearchDirection::forward); }
void ReportFinder::findPrevious() { find(SearchDirection::backward); }

void ReportFinder::find(SearchDirection direction) {
    if (text().isEmpty())
        return enter();
    const SearchResult result = [&] {
        ProgressWindow progress(window(), "Procurando no relatório", "linha", patienceMs_);
        return findText(report_, text(), direction, view_.hit(), report_.rowsOf(view_.page()).first,
                        std::ref(progress));
    }();
    if (result.hit)
        view_.mark(text(), result.hit);
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
