#include "print/ReportPreview.h"

#include "controls/Failure.h"
#include "controls/FileChooser.h"
#include "controls/Icons.h"
#include "controls/MessageBox.h"
#include "print/PageView.h"
#include "print/ProgressWindow.h"
#include "print/ReportFiles.h"
#include "print/ReportPrinting.h"

#include <QAccessible>
#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QStandardPaths>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <functional>

namespace {

constexpr QSize kIconSize(20, 20);
constexpr std::array kPercents = {25, 50, 75, 100, 125, 150, 200, 300, 400};
constexpr int kFindWidth = 24; ///< characters

/// What a file may be called on every system.
QString fileName(const QString& title) {
    QString name;
    for (const QChar c : title)
        name += c.isPrint() && !QStringView(u"\\/:*?\"<>|").contains(c) ? c : QChar('-');
    name = name.trimmed();
    return name.isEmpty() ? "Relatório" : name;
}

} // namespace

struct ReportPreview::Tool {
    const char* name; ///< and icon
    const char* text; ///< beside the icon; "" for none
    const char* tip;
    const char* key;
    void (ReportPreview::*handler)();
};

struct ReportPreview::FileKind {
    const char* title;
    const char* filter;
    const char* suffix;
    const char* work;
    const char* unit;
    SaveResult (*save)(Relatorio&, const QString&, const ReportProgress&);
};

ReportPreview::ReportPreview(Relatorio& report, QWidget* parent)
    : QWidget(parent), report_(report), view_(new PageView(report, this)),
      folder_(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(makeTools());
    column->addWidget(makeFailure());
    column->addWidget(view_, 1);
    column->addWidget(makeFoot());
    view_->setObjectName("pages");
    setFocusProxy(view_);
    connectGuarded(view_, &PageView::pageChanged, this, &ReportPreview::showPage);
    connectGuarded(view_, &PageView::zoomChanged, this, &ReportPreview::showZoom);
    connectGuarded(view_, &PageView::zoomAsked, this, &ReportPreview::zoomStep);
    connectGuarded(&report_, &Relatorio::began, this, &ReportPreview::began);
    connectGuarded(&report_, &Relatorio::rowsTaken, this, &ReportPreview::showState);
    began();
    showZoom();
}

QToolBar* ReportPreview::makeTools() {
    using Self = ReportPreview;
    static constexpr Tool kOut[] = {
        {"print", "Imprimir", "Imprimir",                       "Ctrl+P",       &Self::print       },
        {"pdf",   "PDF",      "Salvar como PDF",                "Ctrl+S",       &Self::savePdfFile },
        {"xlsx",  "Planilha", "Salvar as linhas como planilha", "Ctrl+Shift+S", &Self::saveXlsxFile},
        {"csv",   "CSV",      "Salvar as linhas como CSV",      "Ctrl+Shift+E", &Self::saveCsvFile },
    };
    static constexpr Tool kBack[] = {
        {"first",    "", "Primeira página", "Ctrl+Home", &Self::firstPage   },
        {"previous", "", "Página anterior", "PgUp",      &Self::previousPage},
    };
    static constexpr Tool kOn[] = {
        {"next", "", "Próxima página", "PgDown",   &Self::nextPage},
        {"last", "", "Última página",  "Ctrl+End", &Self::lastPage},
    };
    static constexpr Tool kSmaller[] = {
        {"zoom-out", "", "Reduzir", "Ctrl+-", &Self::zoomOut}
    };
    static constexpr Tool kLarger[] = {
        {"zoom-in", "", "Ampliar", "Ctrl++", &Self::zoomIn}
    };
    static constexpr Tool kHits[] = {
        {"hit-previous", "", "Ocorrência anterior", "Shift+F3", &Self::findPrevious},
        {"hit-next",     "", "Próxima ocorrência", "F3",       &Self::findNext    },
    };

    auto* bar = new QToolBar(this);
    bar->setIconSize(kIconSize);
    bar->setAccessibleName("Ferramentas do relatório");
    addTools(*bar, kOut);
    bar->addSeparator();
    addTools(*bar, kBack);
    bar->addWidget(makeNumber());
    addTools(*bar, kOn);
    bar->addSeparator();
    addTools(*bar, kSmaller);
    bar->addWidget(makeZoom());
    addTools(*bar, kLarger);
    bar->addSeparator();
    bar->addWidget(makeFind());
    addTools(*bar, kHits);

    addKey(Qt::CTRL | Qt::Key_G, &Self::focusNumber);
    addKey(Qt::CTRL | Qt::Key_Equal, &Self::zoomIn); // the key of "+" without Shift
    addKey(Qt::CTRL | Qt::Key_0, &Self::zoomPage);
    addKey(Qt::CTRL | Qt::Key_1, &Self::zoomFull);
    addKey(Qt::CTRL | Qt::Key_2, &Self::zoomWidth);
    addKey(QKeySequence::Find, &Self::focusFind);
    return bar;
}

void ReportPreview::addTools(QToolBar& bar, std::span<const Tool> tools) {
    for (const Tool& tool : tools) {
        const QString tip = QString::fromUtf8(tool.tip);
        auto* action = new QAction(Icons::named(tool.name), tip, this);
        action->setShortcut(QKeySequence(tool.key));
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        action->setToolTip(
            QString("%1 (%2)").arg(tip, QString(tool.key).replace("PgDown", "PgDn")));
        connectGuarded(action, &QAction::triggered, this, tool.handler);
        addAction(action);
        bar.addAction(action);
        auto* button = qobject_cast<QToolButton*>(bar.widgetForAction(action));
        button->setObjectName(tool.name);
        button->setAccessibleName(tip);
        button->setFocusPolicy(Qt::TabFocus);
        if (*tool.text) {
            action->setIconText(QString::fromUtf8(tool.text));
            button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        }
        actions_[tool.name] = action;
    }
}

void ReportPreview::addKey(const QKeySequence& key, void (ReportPreview::*handler)()) {
    auto* action = new QAction(this);
    action->setShortcut(key);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    connectGuarded(action, &QAction::triggered, this, handler);
    addAction(action);
}

QSpinBox* ReportPreview::makeNumber() {
    number_ = new QSpinBox(this);
    number_->setObjectName("number");
    number_->setKeyboardTracking(false);
    number_->setAlignment(Qt::AlignRight);
    number_->setButtonSymbols(QAbstractSpinBox::NoButtons);
    number_->setAccessibleName("Página");
    number_->setToolTip("Ir para a página (Ctrl+G)");
    number_->setMinimumWidth(number_->fontMetrics().horizontalAdvance("00000000"));
    connectGuarded(number_, &QSpinBox::valueChanged, this, &ReportPreview::goToPage);
    connectGuarded(number_, &QSpinBox::editingFinished, this, &ReportPreview::leaveNumber);
    return number_;
}

QComboBox* ReportPreview::makeZoom() {
    zoom_ = new QComboBox(this);
    zoom_->setObjectName("zoom");
    zoom_->setAccessibleName("Zoom");
    zoom_->setToolTip("Zoom: página inteira (Ctrl+0), 100 % (Ctrl+1), largura da página (Ctrl+2)");
    zoom_->addItem("Página inteira", 0);
    zoom_->addItem("Largura da página", 0);
    for (const int percent : kPercents)
        zoom_->addItem(QString("%1 %").arg(percent), percent);
    connectGuarded(zoom_, &QComboBox::activated, this, &ReportPreview::zoomChosen);
    return zoom_;
}

QLineEdit* ReportPreview::makeFind() {
    find_ = new QLineEdit(this);
    find_->setObjectName("find");
    find_->setAccessibleName("Localizar");
    find_->setPlaceholderText("Localizar");
    find_->setToolTip("Localizar nas linhas do relatório (Ctrl+F)");
    find_->setClearButtonEnabled(true);
    find_->setMaximumWidth(find_->fontMetrics().averageCharWidth() * kFindWidth);
    connectGuarded(find_, &QLineEdit::textChanged, this, &ReportPreview::textChanged);
    auto* on = new QAction(find_);
    on->setShortcuts({Qt::Key_Return, Qt::Key_Enter});
    auto* back = new QAction(find_);
    back->setShortcuts({Qt::SHIFT | Qt::Key_Return, Qt::SHIFT | Qt::Key_Enter});
    auto* leave = new QAction(find_);
    leave->setShortcut(Qt::Key_Escape);
    connectGuarded(on, &QAction::triggered, this, &ReportPreview::findNext);
    connectGuarded(back, &QAction::triggered, this, &ReportPreview::findPrevious);
    connectGuarded(leave, &QAction::triggered, this, &ReportPreview::leaveFind);
    for (QAction* action : {on, back, leave}) {
        action->setShortcutContext(Qt::WidgetShortcut);
        find_->addAction(action);
    }
    return find_;
}

QWidget* ReportPreview::makeFailure() {
    auto* frame = new QFrame(this);
    failure_ = frame;
    frame->setFrameShape(QFrame::Box);
    frame->setAutoFillBackground(true);
    frame->setBackgroundRole(QPalette::ToolTipBase);
    frame->setForegroundRole(QPalette::ToolTipText);
    frame->hide();
    auto* row = new QHBoxLayout(frame);
    row->setContentsMargins(8, 6, 8, 6);
    failed_ = new QLabel(frame);
    failed_->setObjectName("failed");
    failed_->setTextFormat(Qt::PlainText);
    failed_->setForegroundRole(QPalette::ToolTipText);
    failed_->setWordWrap(true);
    auto* again = new QPushButton("&Tentar de novo", frame);
    again->setObjectName("again");
    again->setAutoDefault(false);
    again->setToolTip("Ler as linhas do relatório outra vez");
    connectGuarded(again, &QPushButton::clicked, this, &ReportPreview::askAgain);
    row->addWidget(failed_, 1);
    row->addWidget(again);
    return frame;
}

QWidget* ReportPreview::makeFoot() {
    auto* foot = new QWidget(this);
    auto* row = new QHBoxLayout(foot);
    row->setContentsMargins(8, 4, 8, 4);
    row->setSpacing(16);
    pages_ = new QLabel(foot);
    pages_->setObjectName("pageCount");
    news_ = new QLabel(foot);
    news_->setObjectName("news");
    news_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    news_->setTextFormat(Qt::PlainText);
    news_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    row->addWidget(pages_);
    row->addWidget(news_, 1);
    return foot;
}

int ReportPreview::page() const { return view_->page(); }

void ReportPreview::goToPage(int page) { view_->goToPage(page); }

// ---- What becomes of the report

/// Says so if the report isn't whole.
bool ReportPreview::refuseIncomplete(const QString& title) {
    if (report_.state() != RowsState::failed)
        return false;
    showMessage(QString::fromUtf8(kIncomplete), title, MessageIcon::exclamation);
    return true;
}

void ReportPreview::print() {
    if (refuseIncomplete("Impressão"))
        return;
    const PrintOutcome outcome = [this] {
        ProgressWindow progress(this, "Imprimindo", "página", patienceMs_);
        return printReport(report_, page(), this, std::ref(progress));
    }();
    switch (outcome) {
    case PrintOutcome::printed:
        return say("O relatório foi enviado para a impressora.");
    case PrintOutcome::givenUp:
        return say("A impressão foi cancelada.");
    case PrintOutcome::failed:
        say("");
        showMessage("A impressora não aceitou o relatório. Verifique se está ligada e pronta.",
                    "Impressão", MessageIcon::exclamation);
        return;
    case PrintOutcome::incomplete: // refused above
    case PrintOutcome::refused:
        return; // said by the report's error event
    }
}

void ReportPreview::savePdfFile() {
    save({"Salvar como PDF", "Documento PDF (*.pdf)", "pdf", "Gravando o PDF", "página", savePdf});
}

void ReportPreview::saveXlsxFile() {
    save({"Salvar como planilha", "Planilha (*.xlsx)", "xlsx", "Gravando a planilha", "linha",
          saveXlsx});
}

void ReportPreview::saveCsvFile() {
    save({"Salvar como CSV", "Texto separado por ponto e vírgula (*.csv)", "csv", "Gravando o CSV",
          "linha", saveCsv});
}

void ReportPreview::save(const FileKind& kind) {
    if (refuseIncomplete(QString::fromUtf8(kind.title)))
        return;
    const QString path = askPath(kind);
    if (path.isEmpty())
        return;
    say("");
    const SaveResult result = [&] {
        ProgressWindow progress(this, QString::fromUtf8(kind.work), QString::fromUtf8(kind.unit),
                                patienceMs_);
        return kind.save(report_, path, std::ref(progress));
    }();
    switch (result.outcome) {
    case SaveOutcome::saved:
        return say(QString("Salvo em %1").arg(QDir::toNativeSeparators(path)));
    case SaveOutcome::cancelled:
        return say("A gravação foi cancelada; nenhum arquivo foi criado ou alterado.");
    case SaveOutcome::failed:
        showMessage(result.reason, QString::fromUtf8(kind.title), MessageIcon::exclamation);
        return;
    case SaveOutcome::refused:
        return; // said by the report's error event
    }
}

QString ReportPreview::askPath(const FileKind& kind) {
    const QString title = QString::fromUtf8(kind.title);
    const QString suffix = QString(".") + kind.suffix;
    const auto chosen = chooseFile({FileChoice::newFile, title,
                                    QDir(folder_).filePath(fileName(report_.title()) + suffix),
                                    QString::fromUtf8(kind.filter)});
    if (!chosen)
        return {};
    folder_ = QFileInfo(*chosen).absolutePath();
    if (chosen->endsWith(suffix, Qt::CaseInsensitive))
        return *chosen;
    // The dialog has asked about the name as it was typed.
    QString path = *chosen + suffix;
    if (QFileInfo::exists(path) &&
        showMessage(
            QString("\"%1\" já existe. Deseja substituí-lo?").arg(QDir::toNativeSeparators(path)),
            title, MessageIcon::question, MessageButtons::yesNo) != MessageAnswer::yes)
        return {};
    return path;
}

// ---- Pages

void ReportPreview::firstPage() { goToPage(1); }
void ReportPreview::previousPage() { goToPage(page() - 1); }
void ReportPreview::nextPage() { goToPage(page() + 1); }
void ReportPreview::lastPage() { goToPage(report_.pageCount()); }

void ReportPreview::focusNumber() {
    number_->setFocus(Qt::ShortcutFocusReason);
    number_->selectAll();
}

void ReportPreview::leaveNumber() {
    if (number_->hasFocus())
        view_->setFocus();
}

void ReportPreview::began() {
    find_->clear();
    textChanged();
    showPage();
    showState();
}

/// Whether the rows have failed.
void ReportPreview::showState() {
    const bool failed = report_.state() == RowsState::failed;
    if (failed == failure_->isVisibleTo(this))
        return;
    const qint64 count = report_.rows().size();
    failed_->setText(failed ? QString("Relatório incompleto: a leitura das linhas parou depois de "
                                      "%1. Ele não pode ser impresso nem salvo.")
                                  .arg(formatCount(count))
                            : QString());
    const bool leavesFocus = !failed && failure_->isAncestorOf(focusWidget());
    failure_->setVisible(failed);
    if (leavesFocus)
        view_->setFocus();
    if (!failed)
        return;
    showPage();
    QAccessibleEvent alert(failed_, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void ReportPreview::askAgain() { emit againAsked(); }

void ReportPreview::showPage() {
    const int count = report_.pageCount();
    const QSignalBlocker quiet(number_);
    number_->setRange(1, std::max(1, count));
    number_->setValue(page());
    for (const char* name : {"print", "pdf", "xlsx", "csv"})
        actions_[name]->setEnabled(count > 0);
    for (const char* name : {"first", "previous"})
        actions_[name]->setEnabled(page() > 1);
    for (const char* name : {"next", "last"})
        actions_[name]->setEnabled(page() < count);
    QString text;
    if (count > 0)
        text = QString("Página %1 de %2").arg(formatCount(page()), formatCount(count));
    else if (!report_.columns().isEmpty())
        text = "Não há mais registros a imprimir."; // they have gone since it began
    if (report_.state() == RowsState::failed)
        text += " (incompleto)";
    else if (report_.comesAnew())
        text += QString(" (os dados mudaram; lendo as linhas outra vez: %1)")
                    .arg(formatCount(report_.taken()));
    else if (!report_.isComplete())
        text += QString(" (lendo as linhas: %1)").arg(formatCount(report_.taken()));
    pages_->setText(text);
}

// ---- Zoom

void ReportPreview::zoomIn() { zoomStep(1); }
void ReportPreview::zoomOut() { zoomStep(-1); }
void ReportPreview::zoomFull() { view_->setZoom(100); }
void ReportPreview::zoomPage() { view_->fit(PageView::Zoom::page); }
void ReportPreview::zoomWidth() { view_->fit(PageView::Zoom::width); }

void ReportPreview::zoomStep(int steps) {
    const int now = view_->percent();
    if (steps > 0) {
        const auto* larger = std::ranges::upper_bound(kPercents, now);
        view_->setZoom(larger == kPercents.end() ? kPercents.back() : *larger);
    } else {
        const auto* smaller = std::ranges::lower_bound(kPercents, now);
        view_->setZoom(smaller == kPercents.begin() ? kPercents.front() : *(smaller - 1));
    }
}

void ReportPreview::zoomChosen(int index) {
    if (const int percent = zoom_->itemData(index).toInt())
        view_->setZoom(percent);
    else
        view_->fit(index == 0 ? PageView::Zoom::page : PageView::Zoom::width);
}

void ReportPreview::showZoom() {
    switch (view_->zoom()) {
    case PageView::Zoom::page:
        return zoom_->setCurrentIndex(0);
    case PageView::Zoom::width:
        return zoom_->setCurrentIndex(1);
    case PageView::Zoom::percent:
        return zoom_->setCurrentIndex(zoom_->findData(view_->percent()));
    }
}

// ---- Finding

void ReportPreview::focusFind() {
    find_->setFocus(Qt::ShortcutFocusReason);
    find_->selectAll();
}

void ReportPreview::leaveFind() {
    find_->clear();
    view_->setFocus();
}

void ReportPreview::textChanged() {
    view_->mark(find_->text(), std::nullopt);
    for (const char* name : {"hit-previous", "hit-next"})
        actions_[name]->setEnabled(!find_->text().isEmpty());
    say("");
}

void ReportPreview::findNext() { find(SearchDirection::forward); }
void ReportPreview::findPrevious() { find(SearchDirection::backward); }

void ReportPreview::find(SearchDirection direction) {
    const QString text = find_->text();
    if (text.isEmpty())
        return focusFind();
    const SearchResult result = [&] {
        ProgressWindow progress(this, "Procurando no relatório", "linha", patienceMs_);
        return findText(report_, text, direction, view_->hit(), report_.rowsOf(page()).first,
                        std::ref(progress));
    }();
    if (result.hit)
        view_->mark(text, result.hit);
    if (result.cancelled)
        say("A busca foi cancelada.");
    else if (!result.hit && report_.state() == RowsState::failed)
        say(QString("\"%1\" não foi encontrado nas linhas lidas; o relatório está incompleto.")
                .arg(text));
    else if (!result.hit)
        say(QString("\"%1\" não foi encontrado nas linhas do relatório.").arg(text));
    else if (!result.wrapped)
        say("");
    else
        say(direction == SearchDirection::forward
                ? "A busca chegou ao fim do relatório e continuou do início."
                : "A busca chegou ao início do relatório e continuou do fim.");
}

void ReportPreview::say(const QString& text) {
    news_->setText(news_->fontMetrics().elidedText(text, Qt::ElideMiddle, news_->width()));
    news_->setToolTip(text);
}
