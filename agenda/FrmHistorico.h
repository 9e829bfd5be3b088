#pragma once

#include "controls/typing/Formato.h"
#include "controls/window/Form.h"
#include "ui_FrmHistorico.h"

#include <map>
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
class FrmHistorico final : public Form, private Ui::FrmHistorico {
    Q_OBJECT
public:
    FrmHistorico();
    static FrmHistorico& instance();

private:
    using Nomes = std::map<std::int64_t, QString>;
    struct Linha {
        std::int32_t grupo;
        QString operacao;
        bool desfeita;
    };
    struct Parcela {
        int cheques = 0;
        Amount valor;
        int vencidos = 0;  ///< of them, settled ones with a due date
        qint64 atraso = 0; ///< of those, in days, all together
    };

    void Form_Load() override;

    void listar();
    void cmddesfazer_Click();
    void cmdsair_Click() { unload(); }

    [[nodiscard]] QString onde() const;
    /// Whether one of the row's texts has what was typed.
    [[nodiscard]] bool procurado(const ado::Recordset& rs) const;
    void acrescentarLinha(const ado::Recordset& rs);
    void acrescentarSoma(const ado::Recordset& rs);
    void mostrarSomas();

    Nomes clientes_;
    Nomes bancos_;
    std::vector<Linha> linhas_;
    std::map<QString, Parcela> somas_;
};
