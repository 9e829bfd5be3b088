#include "agenda/JanelaDeImpressao.h"

#include "controls/look/Icons.h"
#include "controls/window/Failure.h"
#include "controls/window/WindowList.h"
#include "print/ReportPreview.h"
#include "print/RowSource.h"
#include "shell/Mirtal.h"

#include <QApplication>
#include <QCloseEvent>
#include <QVBoxLayout>
#include <QWindow>

#include <cstddef>
#include <utility>

namespace {

/// Rows that are there already.
class LinhasProntas final : public RowSource {
public:
    LinhasProntas(QStringList colunas, std::vector<std::vector<ReportValue>> linhas)
        : colunas_(std::move(colunas)), linhas_(std::move(linhas)) {}

    [[nodiscard]] QStringList columns() const override { return colunas_; }
    NextRow next(std::vector<ReportValue>& values) override {
        if (proxima_ == linhas_.size())
            return NextRow::none;
        values = std::move(linhas_[proxima_++]);
        return NextRow::row;
    }

private:
    QStringList colunas_;
    std::vector<std::vector<ReportValue>> linhas_;
    std::size_t proxima_ = 0;
};

} // namespace

JanelaDeImpressao::JanelaDeImpressao() : previsao_(std::make_unique<ReportPreview>(relatorio_)) {
    setObjectName("JanelaDeImpressao");
    relatorio_.setObjectName("Relatorio");
    setWindowIcon(Icons::named("print"));
    setWindowModality(Qt::ApplicationModal);
    relatorio_.setComputedField(
        [this](const QString& nome, ReportValue& valor) { Relatorio_Campo(nome, valor); });
    connectGuarded(&relatorio_, &Relatorio::error, this, &JanelaDeImpressao::Relatorio_Erro);
    connectGuarded(previsao_.get(), &ReportPreview::closeAsked, this, &JanelaDeImpressao::sair);
    auto* janela = new QVBoxLayout(this);
    janela->setContentsMargins(0, 0, 0, 0);
    janela->addWidget(previsao_.get());
    setFocusProxy(previsao_.get());
}

JanelaDeImpressao::~JanelaDeImpressao() = default;

JanelaDeImpressao& JanelaDeImpressao::instance() {
    return WindowList::instance().one<JanelaDeImpressao>();
}

void JanelaDeImpressao::mostrar(const Impressos::Impresso& impresso) {
    campos_ = impresso.campos;
    relatorio_.setTitle(impresso.titulo);
    relatorio_.setLayout(impresso.leiaute);
    if (!relatorio_.begin(std::make_unique<LinhasProntas>(impresso.colunas, impresso.linhas))) {
        close();
        return;
    }
    setWindowTitle(impresso.titulo);
    const QWidget* diante = QApplication::activeWindow();
    winId();
    if (diante && diante != this)
        windowHandle()->setTransientParent(diante->windowHandle());
    showMaximized();
    setFocus();
}

void JanelaDeImpressao::Relatorio_Campo(const QString& nome, ReportValue& valor) {
    valor = nome == "Pagina" ? ReportValue(qint64{relatorio_.currentPage()}) : campos_.value(nome);
}

void JanelaDeImpressao::Relatorio_Erro(qint32 codigo) { Mirtal::erroDeRelatorio(codigo, ""); }

void JanelaDeImpressao::closeEvent(QCloseEvent* event) {
    event->accept();
    if (WindowList::instance().retire(*this))
        deleteLater();
}

#include "agenda/moc_JanelaDeImpressao.cpp"
