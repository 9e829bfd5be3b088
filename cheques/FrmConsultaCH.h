#pragma once

#include "controls/window/Form.h"
#include "shell/ClienteMostrado.h"
#include "ui_FrmConsultaCH.h"

#include <cstdint>

/// Consultation: what the shop knows of a client before it takes a cheque of his. His document
/// number, how many of his cheques it holds and their total, and those that came back unpaid, of
/// which each can be opened in FrmLancasSFundos, to be looked at. Only reads.
///
/// A search runs when the client's name is left. Deliberate: it leaves rsSemFundos restricted to
/// the client's cheques.
class FrmConsultaCH final : public Form, public ClienteMostrado, private Ui::FrmConsultaCH {
    Q_OBJECT
public:
    FrmConsultaCH();
    static FrmConsultaCH& instance();
    [[nodiscard]] std::optional<std::int64_t> clienteMostrado() const override;

private:
    void Form_Load() override;

    void txtNome_LostFocus();
    void Lstcheques_ItemClick(const QString& chave, int linha);
    void CmdNovo_Click();
    void CmdSair_Click();

    /// Shows what there is of a client. @return whether a cheque of his came back.
    [[nodiscard]] bool pesquisar(std::int64_t cliente);
    /// Counts and sums the received cheques.
    void somarCheques(const QString& doCliente);
    void listarSemFundos(const QString& doCliente);
    /// No client, no cheques; the list stays.
    void limpar();

    QString ultimoClicado_;
};
