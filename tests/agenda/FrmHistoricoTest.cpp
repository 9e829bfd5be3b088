#include "agenda/FrmHistorico.h"

#include "support/ChequeShop.h"

namespace {

using History = ChequeShop;

TEST_F(History, EscClosesTheWindow) {
    auto& form = open<FrmHistorico>();
    press(Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
}

} // namespace
