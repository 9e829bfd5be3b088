#pragma once

#include "agenda/Nomes.h"
#include "agenda/Vencimentos.h"
#include "controls/typing/Formato.h"
#include "controls/window/Form.h"
#include "shell/ClienteMostrado.h"
#include "ui_FrmHistorico.h"

#include <map>
#include <optional>
#include <vector>

namespace ado {
class Recordset;
}

/// The history: what was done with the cheques, by period, client, operation and text, newest
/// first; or the same in sums, by client, bank, operation or month. What one operation has done,
/// however many cheques, is undone from here.
///
/// Invariant: linhas_ has what isn't shown of each row of the list; it is empty where the list
/// shows sums.
class FrmHistorico final : public Form, public ClienteMostrado, private Ui::FrmHistorico {
    Q_OBJECT
public:
    FrmHistorico();
    static FrmHistorico& instance();

    /// That of the current row; where none is current, the one in the field.
    [[nodiscard]] std::optional<std::int64_t> clienteMostrado() const override;

private:
    struct Linha {
        std::int32_t grupo;
        QString operacao;
        bool desfeita;
        std::optional<std::int64_t> cliente;
    };
    struct Parcela {
        int cheques = 0;
        Amount valor;
        Vencimentos::Atraso atraso;
    };

    void Form_Load() override;

    void listar();
    void mostrarLista();
    void cmddesfazer_Click();
    void cmdsair_Click() { unload(); }

    /// The history's rows that are asked for, but for the text: "<table> where <condition>".
    [[nodiscard]] QString linhasProcuradas() const;
    [[nodiscard]] QString cliente(const ado::Recordset& rs) const;
    [[nodiscard]] QString banco(const ado::Recordset& rs) const;
    void lerNomes(ado::Recordset& rs);
    /// Whether one of the row's texts has what was typed.
    [[nodiscard]] bool procurado(const ado::Recordset& rs) const;
    void acrescentarLinha(const ado::Recordset& rs);
    void acrescentarSoma(const ado::Recordset& rs);
    void mostrarSomas();

    std::optional<Nomes> clientes_; ///< of what is listed
    std::optional<Nomes> bancos_;
    std::vector<Linha> linhas_;
    std::map<QString, Parcela> somas_;
};
