#pragma once

#include <QLineEdit>

class PageView;
class Relatorio;
enum class SearchDirection : unsigned char;

/// The box in which a text is looked for in a report on show: marked on its pages as it is typed,
/// gone through by Enter and Shift+Enter. Esc empties it.
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

private:
    void leave();
    void changed();
    void find(SearchDirection direction);

    Relatorio& report_;
    PageView& view_;
    int patienceMs_ = 1000;
};
