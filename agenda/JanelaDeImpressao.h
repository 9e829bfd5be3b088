#pragma once

#include "agenda/Impressos.h"
#include "print/Relatorio.h"

#include <QWidget>

#include <memory>

class ReportPreview;

/// What the agenda prints, seen before: in front of all other windows, since the agenda is opened
/// from any of them. Printed, saved and searched there as reports are; closing it ends it.
class JanelaDeImpressao final : public QWidget {
    Q_OBJECT
public:
    JanelaDeImpressao();
    ~JanelaDeImpressao() override;
    static JanelaDeImpressao& instance();

    /// Shows it, or says why it can't be shown.
    void mostrar(const Impressos::Impresso& impresso);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void sair() { close(); }
    void Relatorio_Campo(const QString& nome, ReportValue& valor);
    void Relatorio_Erro(qint32 codigo);

    QHash<QString, ReportValue> campos_;
    Relatorio relatorio_{this};
    std::unique_ptr<ReportPreview> previsao_; ///< goes before the report that it shows
};
