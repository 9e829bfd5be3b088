#pragma once

#include "agenda/ChequesListados.h"
#include "agenda/FiltroDaAgenda.h"
#include "controls/window/Form.h"
#include "shell/ClienteMostrado.h"
#include "ui_FrmAgenda.h"

/// The agenda: cheques in hand by due date, with what each day comes to, when banks work, and the
/// marks of what would be handed in too early or soon too late. Cheques are ticked to be summed.
///
/// The list is as the file was when it was last asked: by a choice in the fields, by F5, and after
/// a cheque was opened from here. Ticks stay with their cheques as long as these are listed.
///
/// Invariant: cheque i of listados_ stands in row i of the list, day i of them in row i of lstdias.
class FrmAgenda final : public Form, public ClienteMostrado, private Ui::FrmAgenda {
    Q_OBJECT
public:
    FrmAgenda();
    static FrmAgenda& instance();
    /// Shows it with what falls due on these days.
    static void mostrar(const Vencimentos::Dias& dias);

    /// That of the current cheque; where none is current, the one in the field.
    [[nodiscard]] std::optional<std::int64_t> clienteMostrado() const override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Form_Load() override;

    void filtro_Change();
    void escolha_LostFocus();
    void cmbordem_Click();
    void chkinvertida_Click() { ordenar(chequeAtual()); }
    void lstcheques_ColumnClick(int coluna);
    void lstcheques_ItemCheck(int linha, bool marcado);
    void lstcheques_Enter();
    void cmdmarcar_Click();
    void cmdatualizar_Click() { procurar(); }
    void cmdimprimir_Click();
    void cmdcalendario_Click();
    void cmdbordero_Click();
    void cmdsair_Click() { unload(); }

    /// Asks the file for what the fields say.
    void procurar();
    /// Shows the cheques in their order, the one of this number as the current one.
    void ordenar(std::int64_t atual);
    void mostrarOrdem();
    /// Its `lancamento`, or 0.
    [[nodiscard]] std::int64_t chequeAtual() const;
    void mostrarCheques();
    void mostrarDias();
    void mostrarSomas();
    void abrirDepois(int linha);
    /// Opens a cheque in the entry of cheques, which says why where it can't.
    void abrir(qint32 lancamento);

    bool pronta_ = false; ///< the fields have their entries
    FiltroDaAgenda filtro_;
    std::optional<Vencimentos::Dias> pedidos_; ///< that it is opened for
    Vencimentos::Procura procurado_;           ///< what the cheques were asked for with
    ChequesListados listados_;
    ListaDaAgenda::ColunaDaAgenda coluna_ =
        ListaDaAgenda::kVencimento; ///< that the list is ordered by
};
