#pragma once

#include "print/ReportSearch.h"

#include <QLineEdit>

class PageView;

/// The box in which a text is looked for in a report on show: marked on its pages as it is typed,
/// gone through by Enter and Shift+Enter, counted with the first of them. Esc empties it.
class ReportFinder final : public QLineEdit {
    Q_OBJECT
public:
    ReportFinder(Relatorio& report, PageView& view, QWidget* parent = nullptr);

    void findNext();
    void findPrevious();
    /// Takes the focus, its text marked.
    void enter();

    void setPatience(int milliseconds) { patienceMs_ = milliseconds; }

signals:
    /// What the search has come to; "" if there is nothing to say.
    void said(const QString& text);
    /// Which hit of how many is on show, as "2 de 15"; "" for none.
    void counted(const QString& text);
    /// The operator is done with it.
    void left();

private:
    void changed();
    void find(SearchDirection direction);
    void count(const ReportHit& hit, SearchDirection direction, const ReportProgress& progress);
    void forget();

    Relatorio& report_;
    PageView& view_;
    std::optional<HitCount> count_; ///< of the hit on show
    int patienceMs_ = 1000;
};
