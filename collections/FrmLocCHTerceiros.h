#pragma once

#include "ado/Shown.h"
#include "controls/typing/Formato.h"
#include "controls/window/Form.h"
#include "shell/ClienteMostrado.h"
#include "ui_FrmLocCHTerceiros.h"

#include <QStringList>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ado {
class Recordset;
}

/// The cheque list: one window for three uses, which Mirtal::modo names before it is shown.
///
///     "Baixar"       settlement: cheques are ticked, and Save deletes each from the received ones
///     "localizarCH"  finding a received cheque, which FrmLancarCheques then shows as well
///     "localizarSF"  finding a bounced cheque
///
/// In the last two a second click on the same row picks its cheque: Mirtal::registroEscolhido and
/// Mirtal::lancamentoEscolhido are set and the window closes; with a received cheque that can't be
/// shown the window says so and stays. The list is empty until a filter is used, and each filter
/// replaces it. The mode is read at load, at each filling and at each pick, so it must stay the
/// same while the window is open.
class FrmLocCHTerceiros final : public Form, public ClienteMostrado, private Ui::FrmLocCHTerceiros {
    Q_OBJECT
public:
    FrmLocCHTerceiros();
    ~FrmLocCHTerceiros() override;
    static FrmLocCHTerceiros& instance();

    /// For who lists bounced cheques, of which none is to be deposited. Until the window closes.
    void ocultarDescontar();

    /// That of the current row's cheque, as long as that is in the file.
    [[nodiscard]] std::optional<std::int64_t> clienteMostrado() const override;

private:
    void Form_Load() override;

    void chkdescontar_Click();
    void chkmostrar_Click();
    void txtbanco_Click();
    void txtcliente_Click();
    void txtfim_LostFocus();
    void lstterceiros_ItemCheck(int linha, bool marcado);
    void lstterceiros_ItemClick(const QString& chave, int linha);
    void cmdsalvar_Click();
    void cmdsair_Click();

    /// Lists the cheques that meet a where clause, with `campoNome` in the name column.
    void preencher(const QString& onde, const char* campoNome);
    void acrescentarLinha(const char* campoNome, const QIcon& icone);
    void mostrarTotal(const QString& titulo);
    /// Cheques that have been changed since they were listed.
    struct Alterados {
        QStringList lancamentos;
        std::string porQuem; ///< as ado::Recordset::byWhom() says it
    };
    /// Settles the ticked cheques. @return those that were left alone.
    [[nodiscard]] Alterados baixarMarcados();
    /// Deletes the received cheque, if it is still there, in a transaction of its own.
    /// @return false if it isn't any more as it was listed: then it stays.
    [[nodiscard]] static bool baixar(const QString& lancamento, const ado::Shown& visto);
    /// Names the cheques left alone and lists all of them as they are now.
    void mostrarAlterados(const Alterados& alterados);

    std::unique_ptr<ado::Recordset> rs_; ///< of the list on show; null when closed
    std::vector<ado::Shown> vistos_;     ///< of each row of a list to settle from
    QString onde_;                       ///< what the list on show was asked for with
    const char* campoNome_ = "";
    Amount total_; ///< of the ticked cheques; see ListaDeCheques::somaAoMarcar()
    QString ultimoClicado_;
};
