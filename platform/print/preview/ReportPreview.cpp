#include "print/ReportPreview.h"

#include "controls/look/Spoken.h"
#include "controls/window/Failure.h"
#include "print/PageView.h"
#include "print/output/ProgressWindow.h"
#include "print/output/ReportOutput.h"
#include "print/preview/FailureNotice.h"
#include "print/preview/FocusReturn.h"
#include "print/preview/PageMouse.h"
#include "print/preview/ReportFinder.h"
#include "print/preview/SpokenPages.h"
#include "print/preview/ToolStrip.h"
#include "print/preview/WidgetKeys.h"
#include "print/preview/ZoomBox.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QLabel>
#include <QScrollBar>
#include <QSpinBox>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>
#include <functional>

namespace {

/// The pages, with a mouse and a voice: that first, as what a screen reader knows of a view is
/// asked for when it is made.
PageView* makePages(Relatorio& report, QWidget* parent) {
    installSpokenPages();
    auto* pages = new PageView(report, parent);
    new PageMouse(*pages);
    return pages;
}

} // namespace

ReportPreview::ReportPreview(Relatorio& report, QWidget* parent)
    : QWidget(parent), report_(report), view_(makePages(report, this)),
      output_(new ReportOutput(report, *this)), tools_(new ToolStrip(*this, *view_)),
      focus_(new FocusReturn(*this, *view_)) {
    auto* notice = new FailureNotice(report, this);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(tools_);
    column->addWidget(notice);
    column->addWidget(view_, 1);
    column->addWidget(makeFoot());
    addTools();
    view_->setObjectName("pages");
    setFocusProxy(view_);
    connectGuarded(view_, &PageView::pageChanged, this, &ReportPreview::showPage);
    connectGuarded(view_->verticalScrollBar(), &QScrollBar::valueChanged, this,
                   &ReportPreview::showSteps);
    connectGuarded(output_, &ReportOutput::said, this, &ReportPreview::say);
    connectGuarded(find_, &ReportFinder::textChanged, this, &ReportPreview::textChanged);
    connectGuarded(find_, &ReportFinder::said, this, &ReportPreview::say);
    connect(notice, &FailureNotice::againAsked, this, &ReportPreview::againAsked);
    connect(notice, &FailureNotice::focusLeft, view_, qOverload<>(&QWidget::setFocus));
    connectGuarded(&report_, &Relatorio::began, this, &ReportPreview::began);
    began();
}

void ReportPreview::addTools() {
    QToolBar& out = tools_->addGroup("Imprimir e salvar");
    tools_->add(out,
                {"print", "Imprimir", "Imprimir", "Ctrl+P", [this] { output_->print(page()); }});
    tools_->add(out,
                {"pdf", "PDF", "Salvar como PDF", "Ctrl+S", [this] { output_->savePdfFile(); }});
    tools_->add(out, {"xlsx", "Planilha", "Salvar as linhas como planilha", "Ctrl+Shift+S",
                      [this] { output_->saveXlsxFile(); }});
    tools_->add(out, {"csv", "CSV", "Salvar as linhas como CSV", "Ctrl+Shift+E",
                      [this] { output_->saveCsvFile(); }});

    QToolBar& pages = tools_->addGroup("Páginas");
    tools_->add(pages,
                {"first", "", "Início do relatório", "Ctrl+Home", [this] { view_->goToStart(); }});
    tools_->add(pages,
                {"previous", "", "Página anterior", "Ctrl+PgUp", [this] { goToPage(page() - 1); }});
    pages.addWidget(makeNumber());
    tools_->add(pages,
                {"next", "", "Próxima página", "Ctrl+PgDown", [this] { goToPage(page() + 1); }});
    tools_->add(pages,
                {"last", "", "Fim do relatório, com o total", "Ctrl+End", [this] { goToEnd(); }});

    QToolBar& zoom = tools_->addGroup("Zoom");
    zoom_ = new ZoomBox(*view_, this);
    tools_->add(zoom, {"zoom-out", "", "Reduzir", "Ctrl+-", [this] { zoom_->step(-1); }});
    zoom.addWidget(zoom_);
    tools_->add(zoom, {"zoom-in", "", "Ampliar", "Ctrl++", [this] { zoom_->step(1); }});

    QToolBar& find = tools_->addGroup("Localizar");
    find_ = new ReportFinder(report_, *view_, this);
    auto* counted = new QLabel(this);
    counted->setObjectName("hits");
    counted->setAlignment(Qt::AlignCenter);
    counted->setMinimumWidth(counted->fontMetrics().horizontalAdvance("9.999 de 9.999 "));
    connect(find_, &ReportFinder::left, focus_, [this] { focus_->leave(*find_); });
    focus_->watch(*find_);
    connect(find_, &ReportFinder::counted, counted, &QLabel::setText);
    find.addWidget(find_);
    find.addWidget(counted);
    tools_->add(find, {"hit-previous", "", "Ocorrência anterior", "Shift+F3",
                       [this] { find_->findPrevious(); }});
    tools_->add(find, {"hit-next", "", "Próxima ocorrência", "F3", [this] { find_->findNext(); }});

    QToolBar& leave = tools_->addGroup("Sair");
    tools_->add(leave,
                {"close", "Sair", "Fechar o relatório", "", [this] { emit closeAsked(); }, "Esc"});
    addWindowKeys();
}

void ReportPreview::addWindowKeys() {
    tools_->addKey(Qt::Key_PageUp, [this] { view_->turn(-1); });
    tools_->addKey(Qt::Key_PageDown, [this] { view_->turn(1); });
    tools_->addKey(Qt::CTRL | Qt::Key_G, [this] { focusNumber(); });
    // The key of "+" without Shift.
    tools_->addKey(Qt::CTRL | Qt::Key_Equal, [this] { zoom_->step(1); });
    tools_->addKey(Qt::CTRL | Qt::Key_0, [this] { view_->fit(PageView::Zoom::page); });
    tools_->addKey(Qt::CTRL | Qt::Key_1, [this] { view_->setZoom(100); });
    tools_->addKey(Qt::CTRL | Qt::Key_2, [this] { view_->fit(PageView::Zoom::width); });
    tools_->addKey(QKeySequence::Find, [this] { find_->enter(); });
    tools_->addKey(QKeySequence::SelectAll, [this] { view_->markAll(); });
    tools_->addKey(QKeySequence::Copy, [this] { copy(); });
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
    connect(number_, &QSpinBox::editingFinished, focus_, [this] { focus_->leave(*number_); });
    addKeys(*number_, {Qt::Key_Escape}, [this] {
        showPage();
        focus_->leave(*number_);
    });
    focus_->watch(*number_);
    return number_;
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
    news_->setAccessibleName("Aviso do relatório");
    tellAtOnce(*news_);
    news_->hide();
    news_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    news_->setTextFormat(Qt::PlainText);
    news_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    row->addWidget(pages_);
    row->addWidget(news_, 1);
    return foot;
}

int ReportPreview::page() const { return view_->page(); }

void ReportPreview::goToPage(int page) { view_->goToPage(page); }

void ReportPreview::setPatience(int milliseconds) {
    patienceMs_ = milliseconds;
    output_->setPatience(milliseconds);
    find_->setPatience(milliseconds);
}

void ReportPreview::keyPressEvent(QKeyEvent* event) {
    const bool back = event->modifiers() & Qt::ShiftModifier;
    switch (event->key()) {
    case Qt::Key_Home:
        view_->goToStart();
        return;
    case Qt::Key_End:
        guarded([this] { goToEnd(); });
        return;
    case Qt::Key_Space:
        view_->turn(back ? -1 : 1);
        return;
    case Qt::Key_Escape:
        emit closeAsked();
        return;
    default:
        QWidget::keyPressEvent(event);
    }
}

/// False if another report is at work or the operator has stopped it.
bool ReportPreview::takeAll() {
    if (report_.state() != RowsState::coming)
        return true;
    const Relatorio::Run run(report_);
    ProgressWindow progress(this, "Lendo as linhas", "linha", patienceMs_);
    return run && report_.takeAll(run, std::ref(progress)) != RowsState::coming;
}

/// The total stands behind the last row.
void ReportPreview::goToEnd() {
    if (takeAll())
        view_->goToEnd();
}

void ReportPreview::copy() {
    const TextSelection& marked = view_->selection();
    if (marked.isEmpty() || (marked.isAll() && !takeAll()))
        return;
    QApplication::clipboard()->setText(marked.text());
    say("O texto marcado foi copiado.");
}

void ReportPreview::focusNumber() {
    number_->setFocus(Qt::ShortcutFocusReason);
    number_->selectAll();
}

void ReportPreview::began() {
    find_->clear();
    textChanged();
    say("");
    showPage();
}

void ReportPreview::textChanged() {
    for (const char* name : {"hit-previous", "hit-next"})
        tools_->setToolEnabled(name, !find_->text().isEmpty());
}

/// Whether there is anything before and behind what is seen.
void ReportPreview::showSteps() {
    const QScrollBar& bar = *view_->verticalScrollBar();
    const int count = report_.pageCount();
    tools_->setToolEnabled("first", page() > 1 || bar.value() > 0);
    tools_->setToolEnabled("previous", page() > 1);
    tools_->setToolEnabled("next", page() < count);
    tools_->setToolEnabled("last", page() < count || !view_->isAtEnd());
}

void ReportPreview::showPage() {
    const int count = report_.pageCount();
    const QSignalBlocker quiet(number_);
    number_->setRange(1, std::max(1, count));
    number_->setValue(page());
    for (const char* name : {"print", "pdf", "xlsx", "csv"})
        tools_->setToolEnabled(name, count > 0);
    showSteps();
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

void ReportPreview::say(const QString& text) {
    showStatus(*news_, text);
    news_->parentWidget()->layout()->activate();
    news_->setText(news_->fontMetrics().elidedText(text, Qt::ElideMiddle, news_->width()));
    news_->setToolTip(text);
}

#include "print/moc_ReportPreview.cpp"
