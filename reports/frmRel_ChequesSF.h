#pragma once

#include "controls/typing/Formato.h"
#include "print/Relatorio.h"
#include "reports/Relatorios.h"

#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

class ReportPreview;

/// The window in which the reports of cheques are seen, printed and saved. It shows one report at a
/// time; the next one takes its place, and closing it ends the report.
class frmRel_ChequesSF final : public QWidget {
    Q_OBJECT
public:
    frmRel_ChequesSF();
    ~frmRel_ChequesSF() override;
    static frmRel_ChequesSF& instance();
    /// Where the window is shown: the main window takes it in. Without it, by itself.
    static void aoMostrar(std::function<void(QWidget&)> mostrar);

    /// Shows the report of what was chosen, or says why there is none.
    /// @throws jet::Error if its statement fails.
    void imprimir(const Relatorios::Escolha& escolha);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void sair();
    bool iniciar(const Relatorios::Escolha& escolha);
    void repetir();
    void Relatorio_Campo(const QString& nome, ReportValue& valor);
    void Relatorio_Detalhe(const ReportRow& linha);
    void Relatorio_Recomeco();
    void Relatorio_Erro(qint32 codigo);

    struct Andamento {
        Relatorios::Escolha escolha;
        Amount total; ///< of the values of the rows that have come
    };
    Andamento andamento_; ///< of the report on show, or that is being begun

    Relatorio relatorio_{this};
    std::unique_ptr<ReportPreview> previsao_; ///< goes before the report that it shows
    /// The error of a report that is being begun: told when the wait window has gone.
    std::optional<qint32> erro_;
    bool iniciando_ = false;
    QPointer<QWidget> antes_; ///< had the focus when the report was asked for, and gets it back
};
