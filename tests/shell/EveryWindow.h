#pragma once

#include "agenda/FrmAgenda.h"
#include "agenda/FrmBordero.h"
#include "agenda/FrmFicha.h"
#include "agenda/FrmHistorico.h"
#include "agenda/JanelaDeImpressao.h"
#include "cheques/FrmConsultaCH.h"
#include "cheques/FrmLancarCheques.h"
#include "collections/FrmLancasSFundos.h"
#include "collections/FrmLocCHTerceiros.h"
#include "collections/FrmRenegociar.h"
#include "controls/box/ListView.h"
#include "controls/look/Style.h"
#include "registers/frmBancos.h"
#include "registers/frmCliFor.h"
#include "reports/FrmApagar.h"
#include "reports/FrmFiltroRelat.h"
#include "reports/frmRel_ChequesSF.h"
#include "reports/frm_Msg.h"
#include "shell/FrmAjuda.h"
#include "shell/MDICheques.h"
#include "shell/Mirtal.h"
#include "shell/frmAbout.h"
#include "shell/frmcaminho.h"
#include "shell/frmlocalizar.h"
#include "support/ChequeShop.h"

#include <QSettings>
#include <QTabWidget>
#include <QTemporaryDir>

#include <functional>
#include <string>
#include <vector>

/// Every window of the program in every state that it can be seen in, over a shop in the middle of
/// its work: for what holds for all of them.
class EveryWindow : public ChequeShop {
protected:
    using ChequeShop::ChequeShop;
    static void SetUpTestSuite() {
        qputenv("DBUS_SESSION_BUS_ADDRESS", ""); // no desktop changes the colours meanwhile
        aplicarEstilo(*qApp);
    }
    void SetUp() override {
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings_.path());
        ChequeShop::SetUp();
        given("cheques", {received(kAna, "000101", 10), received(kBento, "000102", 250)});
        given("semfundos", {bounced("000901"), bounced("000902")});
    }

    void TearDown() override {
        ChequeShop::TearDown();
        // What the main window's commands have set.
        Mirtal::aoMostrarMensagem({});
        FrmLancarCheques::aoLocalizar({});
        frmRel_ChequesSF::aoMostrar({});
    }

    struct State {
        std::string name;
        std::function<QWidget&()> show;
    };
    /// Each is shown from the beginning: all other windows are gone.
    static std::vector<State> states() {
        std::vector<State> all = {
            {"principal",         [] { return atAGlance(); }               },
            {"principal-vazia",   [] { return panelPutAway(); }            },
            {"bancos",            [] { return window<frmBancos>(); }       },
            {"localizar",         [] { return window<frmlocalizar>(); }    },
            {"localizar-achados", [] { return found(); }                   },
            {"entrada",           [] { return window<FrmLancarCheques>(); }},
            {"entrada-cheque",    [] { return walked<FrmLancarCheques>(); }},
            {"baixa",             [] { return listed("Baixar"); }          },
            {"cheques",           [] { return listed("localizarCH"); }     },
            {"sem-fundos",        [] { return window<FrmLancasSFundos>(); }},
            {"sem-fundos-cheque", [] { return walked<FrmLancasSFundos>(); }},
            {"sem-fundos-busca",  [] { return searched(); }                },
            {"consulta",          [] { return window<FrmConsultaCH>(); }   },
            {"consulta-cliente",  [] { return consulted(); }               },
            {"renegociar",        [] { return window<FrmRenegociar>(); }   },
            {"apagar",            [] { return window<FrmApagar>(); }       },
            {"agenda",            [] { return scheduled(); }               },
            {"ficha",             [] { return window<FrmFicha>(); }        },
            {"ficha-cliente",     [] { return sheet(); }                   },
            {"agenda-impressa",   [] { return scheduleOnPaper(); }         },
            {"bordero",           [] { return window<FrmBordero>(); }      },
            {"historico",         [] { return past(); }                    },
            {"diretorio",         [] { return window<frmcaminho>(); }      },
            {"filtro-recebidos",  [] { return filter("relch"); }           },
            {"filtro-sem-fundos", [] { return filter("relsf"); }           },
            {"mensagem",          [] { return waiting(); }                 },
            {"relatorio",         [] { return report(); }                  },
            {"sobre",             [] { return window<frmAbout>(); }        },
            {"ajuda",             [] { return window<FrmAjuda>(); }        },
        };
        all.reserve(all.size() + 3);
        for (int page = 0; page < 3; ++page)
            all.push_back(
                {"clientes-" + std::to_string(page + 1), [page] { return client(page); }});
        std::vector<State> each;
        each.reserve(all.size());
        for (State& state : all)
            each.push_back({state.name, [show = std::move(state.show)]() -> QWidget& {
                                WindowList::instance().clear();
                                Mirtal::modo.clear();
                                QWidget& shown = show();
                                QCoreApplication::processEvents();
                                return shown;
                            }});
        return each;
    }

private:
    using Shown = std::reference_wrapper<QWidget>;

    static Row received(int client, const char* numero, std::int64_t reais) {
        // clang-format off
        return {
            {"cliente",    number(client)},
            {"banco",      number(kNorte)},
            {"agencia",    words("0042")},
            {"numero",     words(numero)},
            {"data",       day(2026, 3, 1)},
            {"bompara",    day(2026, 4, 1)},
            {"valor",      money(reais)},
            {"descontar",  yes(true)},
            {"autorizou",  words("Rita")},
            {"observacao", words("nada consta")},
        };
        // clang-format on
    }
    static Row bounced(const char* numero) {
        // clang-format off
        return {
            {"cliente", number(kAna)},
            {"banco",   number(kAgro)},
            {"agencia", words("0042")},
            {"numero",  words(numero)},
            {"data",    day(2026, 3, 1)},
            {"valor",   money(75)},
            {"empresa", words("Loja Um")},
        };
        // clang-format on
    }

    template <class Window>
    static Shown window() {
        return open<Window>();
    }
    template <class Window>
    static Shown walked() {
        auto& form = open<Window>();
        click(form, "btnNavegacao", 0);
        return form;
    }
    /// With the sums of the day. Put away before, the panel is fetched again.
    static Shown atAGlance() {
        auto& main = open<MDICheques>();
        if (control(main, "cmdpainel").isVisible())
            click(main, "cmdpainel");
        const auto& clients = control<ListView>(main, "lstclientes");
        EXPECT_TRUE(QTest::qWaitFor([&] { return clients.count() > 0; }));
        QCoreApplication::sendPostedEvents(); // laid out anew for what it shows
        QCoreApplication::processEvents();
        return main;
    }
    static Shown panelPutAway() {
        QWidget& main = atAGlance();
        click(main, "cmdocultar");
        return main;
    }
    static Shown waiting() {
        frm_Msg::instance().setMensagem("Aguarde enquanto o relatório é processado...");
        return window<frm_Msg>();
    }
    static Shown found() {
        auto& form = open<frmlocalizar>();
        type(form, "txtpesquisar", "a");
        return form;
    }
    static Shown past() {
        data().rsCheques.MoveFirst();
        data().rsCheques["autorizou"] = "Rita Moura";
        data().rsCheques.Update();
        return window<FrmHistorico>();
    }
    static Shown listed(const char* mode) {
        Mirtal::modo = mode;
        auto& form = open<FrmLocCHTerceiros>();
        click(form, "chkdescontar");
        return form;
    }
    static Shown searched() {
        auto& form = open<FrmLancasSFundos>();
        click(form, "CmdBuscar");
        return form;
    }
    static Shown scheduled() {
        auto& form = open<FrmAgenda>();
        type(form, "cmbperiodo", "De");
        type(form, "txtinicio", "01012026");
        type(form, "txtfim", "31122026");
        press(Qt::Key_Return);
        clickCheckBox(form, "lstcheques", 0);
        return form;
    }
    static Shown scheduleOnPaper() {
        click(scheduled(), "cmdimprimir");
        auto& window = JanelaDeImpressao::instance();
        activate(window);
        return window;
    }
    static Shown consulted() {
        auto& form = open<FrmConsultaCH>();
        type(form, "txtNome", "ana");
        press(Qt::Key_Return);
        return form;
    }
    static Shown sheet() {
        auto& form = open<FrmFicha>();
        type(form, "txtcliente", "ana");
        press(Qt::Key_Return);
        return form;
    }
    static Shown filter(const char* mode) {
        Mirtal::modo = mode;
        FrmFiltroRelat::mostrar();
        return FrmFiltroRelat::instance();
    }
    static Shown report() {
        auto& form = static_cast<FrmFiltroRelat&>(filter("relch").get());
        activate(form);
        type(form, "txtdtinicial", "01012026");
        type(form, "txtdtfinal", "31122026");
        click(form, "CmdImprimir");
        auto& window = frmRel_ChequesSF::instance();
        window.show();
        activate(window);
        const auto& rows = *window.findChild<Relatorio*>("Relatorio");
        EXPECT_TRUE(QTest::qWaitFor([&] { return rows.isComplete(); }, 60'000));
        return window;
    }
    static Shown client(int page) {
        auto& form = open<frmCliFor>();
        control<QTabWidget>(form, "tabCliFor").setCurrentIndex(page);
        return form;
    }

    QTemporaryDir settings_;
};
