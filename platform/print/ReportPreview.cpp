#include "print/ReportPreview.h"

#include "controls/Failure.h"
#include "controls/Icons.h"
#include "print/FailureNotice.h"
#include "print/PageView.h"
#include "print/ProgressWindow.h"
#include "print/ReportFinder.h"
#include "print/ReportOutput.h"
#include "print/ZoomBox.h"

#include <QAction>
#include <QLabel>
#include <QSpinBox>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <array>

namespace {

constexpr QSize kIconSize(20, 20);

} // namespace

struct ReportPreview::Tool {
    const char* name; ///< and icon
    const char* text; ///< beside the icon; "" for none
    const char* tip;
    const char* key;
    Work work;
};

ReportPreview::ReportPreview(Relatorio& report, QWidget* parent)
    : QWidget(parent), report_(report), view_(new PageView(report, this)),
      output_(new ReportOutput(report, *this)), find_(new ReportFinder(report, *view_, this)),
      zoom_(new ZoomBox(*view_, this)) {
    auto* notice = new FailureNotice(report, this);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(makeTools());
    column->addWidget(notice);
    column->addWidget(view_, 1);
    column->addWidget(makeFoot());
    view_->setObjectName("pages");
    setFocusProxy(view_);
    connectGuarded(view_, &PageView::pageChanged, this, &ReportPreview::showPage);
    connectGuarded(output_, &ReportOutput::said, this, &ReportPreview::say);
    connectGuarded(find_, &ReportFinder::textChanged, this, &ReportPreview::textChanged);
    connectGuarded(find_, &ReportFinder::said, this, &ReportPreview::say);
    connect(notice, &FailureNotice::againAsked, this, &ReportPreview::againAsked);
    connect(notice, &FailureNotice::focusLeft, view_, qOverload<>(&QWidget::setFocus));
    connectGuarded(&report_, &Relatorio::began, this, &ReportPreview::began);
    began();
}

QToolBar* ReportPreview::makeTools() {
    const std::array out = {
        Tool{"print", "Imprimir", "Imprimir",                       "Ctrl+P",       [this] { output_->print(page()); }},
        Tool{"pdf",   "PDF",      "Salvar como PDF",                "Ctrl+S",       [this] { output_->savePdfFile(); }},
        Tool{"xlsx",  "Planilha", "Salvar as linhas como planilha", "Ctrl+Shift+S",
             [this] { output_->saveXlsxFile(); }                                                                      },
        Tool{"csv",   "CSV",      "Salvar as linhas como CSV",      "Ctrl+Shift+E",
             [this] { output_->saveCsvFile(); }                                                                       },
    };
    const std::array back = {
        Tool{"first",    "", "Primeira página", "Ctrl+Home", [this] { goToPage(1); }         },
        Tool{"previous", "", "Página anterior", "PgUp",      [this] { goToPage(page() - 1); }},
    };
    const std::array on = {
        Tool{"next", "", "Próxima página", "PgDown",   [this] { goToPage(page() + 1); }         },
        Tool{"last", "", "Última página",  "Ctrl+End", [this] { goToPage(report_.pageCount()); }},
    };
    const std::array smaller = {
        Tool{"zoom-out", "", "Reduzir", "Ctrl+-", [this] { zoom_->step(-1); }}
    };
    const std::array larger = {
        Tool{"zoom-in", "", "Ampliar", "Ctrl++", [this] { zoom_->step(1); }}
    };
    const std::array hits = {
        Tool{"hit-previous", "", "Ocorrência anterior", "Shift+F3",
             [this] { find_->findPrevious(); }                                                    },
        Tool{"hit-next",     "", "Próxima ocorrência", "F3",       [this] { find_->findNext(); }},
    };

    auto* bar = new QToolBar(this);
    bar->setIconSize(kIconSize);
    bar->setAccessibleName("Ferramentas do relatório");
    addTools(*bar, out);
    bar->addSeparator();
    addTools(*bar, back);
    bar->addWidget(makeNumber());
    addTools(*bar, on);
    bar->addSeparator();
    addTools(*bar, smaller);
    bar->addWidget(zoom_);
    addTools(*bar, larger);
    bar->addSeparator();
    bar->addWidget(find_);
    addTools(*bar, hits);

    addKey(Qt::CTRL | Qt::Key_G, [this] { focusNumber(); });
    addKey(Qt::CTRL | Qt::Key_Equal, [this] { zoom_->step(1); }); // the key of "+" without Shift
    addKey(Qt::CTRL | Qt::Key_0, [this] { view_->fit(PageView::Zoom::page); });
    addKey(Qt::CTRL | Qt::Key_1, [this] { view_->setZoom(100); });
    addKey(Qt::CTRL | Qt::Key_2, [this] { view_->fit(PageView::Zoom::width); });
    addKey(QKeySequence::Find, [this] { find_->enter(); });
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
        connect(action, &QAction::triggered, this, [work = tool.work] { guarded(work); });
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

void ReportPreview::addKey(const QKeySequence& key, const Work& work) {
    auto* action = new QAction(this);
    action->setShortcut(key);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    connect(action, &QAction::triggered, this, [work] { guarded(work); });
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

void ReportPreview::setPatience(int milliseconds) {
    output_->setPatience(milliseconds);
    find_->setPatience(milliseconds);
}

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
    say("");
    showPage();
}

void ReportPreview::textChanged() {
    for (const char* name : {"hit-previous", "hit-next"})
        actions_[name]->setEnabled(!find_->text().isEmpty());
}

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

void ReportPreview::say(const QString& text) {
    news_->setText(news_->fontMetrics().elidedText(text, Qt::ElideMiddle, news_->width()));
    news_->setToolTip(text);
}
