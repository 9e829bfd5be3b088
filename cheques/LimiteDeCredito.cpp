#include "cheques/LimiteDeCredito.h"

#include "controls/window/MessageBox.h"
#include "shell/Valores.h"

namespace LimiteDeCredito {

bool ultrapassado(ado::Recordset& rs, Amount maisEste, Amount limite) {
    constexpr char kTotal[] = "O total dos cheques do cliente";
    Amount total;
    for (rs.MoveFirst(); !rs.EOF(); rs.MoveNext()) {
        total = Valores::soma(total, Valores::valor(rs["valor"]), kTotal);
        const Amount comEste = Valores::soma(total, maisEste, kTotal);
        if (comEste <= limite || limite <= Amount{})
            continue;
        showMessage("Cliente ultrapassou seu Limite de crédito!\r\rLimite  Crédito :" +
                        formatMoney(limite) + "\rTotal em Cheques:" + formatMoney(comEste),
                    "Limite de crédito", MessageIcon::critical);
        return true;
    }
    return false;
}

} // namespace LimiteDeCredito
