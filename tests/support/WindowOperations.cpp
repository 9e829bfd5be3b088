#include "support/WindowOperations.h"

#include "agenda/FrmAgenda.h"
#include "agenda/FrmBordero.h"
#include "agenda/FrmFicha.h"
#include "agenda/FrmHistorico.h"
#include "cheques/FrmConsultaCH.h"
#include "cheques/FrmLancarCheques.h"
#include "collections/FrmLancasSFundos.h"
#include "collections/FrmLocCHTerceiros.h"
#include "collections/FrmRenegociar.h"
#include "controls/box/DropDownList.h"
#include "controls/box/ListView.h"
#include "registers/frmBancos.h"
#include "registers/frmCliFor.h"
#include "reports/FrmApagar.h"
#include "reports/FrmFiltroRelat.h"
#include "shell/Mirtal.h"
#include "shell/frmlocalizar.h"
#include "support/Cluster.h"

#include <QThread>
#include <QTimer>

void WindowOperations::SetUp() {
    ShopTest::SetUp();
    setMessageFunction([](const Message& message) {
        EXPECT_NE(message.title, "Advertência") << message; // what isn't saved took no time
        return message.buttons == MessageButtons::yesNo ? MessageAnswer::yes : MessageAnswer::ok;
    });
    address_ = Mirtal::DatabaseFolder.toStdString();
    fill();
    data().historico.comecar(); // makes its table, once in a shop's life
}

void WindowOperations::TearDown() {
    closeAll();
    ShopTest::TearDown();
}

/// Clients with as many cheques each, due evenly in the five years before and after this day; of
/// the last bank there are few.
void WindowOperations::fill() const {
    const std::string clients = std::to_string(clients_);
    const std::string cheques = std::to_string(cheques_);
    const std::string statements[] = {
        "insert into cliente_fornecedor (nome, tipo, vender, cidade, limite_credito) "
        "select 'Cliente ' || lpad(i::text, 6, '0'), true, 'SIM', 'Araraquara', 0 "
        "from generate_series(1, " +
            clients + ") i",
        ("insert into bancos (cod_banco, nome) select i, case i when 20 then 'Raro' "
         "else 'Banco ' || lpad(i::text, 2, '0') end from generate_series(1, 20) i"),
        "insert into cheques (cliente, banco, agencia, numero, data, bompara, valor, descontar) "
        "select 1 + (i - 1) % " +
            clients + ", case when i % (" + cheques +
            " / 50) = 0 then 20 "
            "else 1 + i % 19 end, '0042', lpad(i::text, 8, '0'), "
            "current_date + (i::bigint * 31 % 3650 - 1855)::int, "
            "current_date + (i::bigint * 31 % 3650 - 1825)::int, 10 + i % 5000, i % 3 > 0 "
            "from generate_series(1, " +
            cheques + ") i",
        "insert into semfundos (cliente, banco, agencia, numero, data, valor, empresa) "
        "select 1 + i * 7 % " +
            clients +
            ", 1 + i % 19, '0042', lpad(i::text, 8, '0'), "
            "current_date - i % 3650, 10 + i % 5000, 'Loja Um' "
            "from generate_series(1, " +
            cheques + " / 100) i",
    };
    for (const std::string& statement : statements) // of which nobody has to hear
        static_cast<void>(
            Cluster::answer(address_, "do $$ begin set local session_replication_role = replica; " +
                                          statement + "; end $$"));
    // As the server does it by itself in the hours after: else lists are read twice over, and it
    // does so while a clerk waits.
    static_cast<void>(Cluster::answer(address_, "vacuum analyze"));
}

/// Another station saves a cheque, and we have heard of it. Not the second one, which others erase.
void WindowOperations::another() const {
    data().Automacao.flush();
    const std::uint64_t before = data().Automacao.store().generation();
    ASSERT_EQ(Cluster::answer(address_, "update cheques set observacao = 'visto' where lancamento "
                                        "= (select min(lancamento) from cheques) returning 1"),
              "1");
    while (data().Automacao.store().generation() == before)
        QThread::yieldCurrentThread();
}

// ---- how a clerk works

void WindowOperations::closeAll() {
    WindowList::instance().clear();
    Mirtal::modo.clear();
    data().rsCheques.clearFilter();
    data().rsSemFundos.clearFilter();
    QCoreApplication::processEvents();
}

template <class Window>
void WindowOperations::reopen() {
    closeAll();
    open<Window>();
}

/// At the second row.
template <class Window>
void WindowOperations::walked() {
    reopen<Window>();
    click(Window::instance(), "btnNavegacao", 0);
    click(Window::instance(), "btnNavegacao", 2);
}

template <class Window>
void WindowOperations::press(const char* button) {
    click(Window::instance(), button);
}

/// As the mouse does it: at once.
template <class Window>
void WindowOperations::choose(const char* list, const QString& name) {
    auto& names = control<DropDownList>(Window::instance(), list);
    names.setFocus();
    for (int i = 0; i < names.count(); ++i)
        if (names.itemText(i) == name)
            names.setListIndex(i);
    EXPECT_EQ(names.text(), name);
    emit names.clicked();
}

void WindowOperations::leave() { FormTest::press(Qt::Key_Return); }

void WindowOperations::openList() {
    closeAll();
    Mirtal::modo = "Baixar";
    open<FrmLocCHTerceiros>();
}

/// A new one, up to its value.
void WindowOperations::enterCheque(const char* numero) {
    reopen<FrmLancarCheques>();
    auto& form = FrmLancarCheques::instance();
    click(form, "CmdNovo");
    type(form, "txtNome", "Cliente 000011");
    leave();
    type(form, "txtbanco", "Banco 05");
    leave();
    type(form, "txtnumero", numero);
    leave();
    type(form, "txtvalor", "150,00");
}

/// In the list of the cheques, which is modal: the first of a client that can be shown.
void WindowOperations::chooseFromList() {
    auto& list = FrmLocCHTerceiros::instance();
    if (!list.isVisible()) // still loading, which lets events through
        return QTimer::singleShot(0, qApp, &WindowOperations::chooseFromList);
    activate(list);
    choose<FrmLocCHTerceiros>("txtcliente", "Cliente 000013");
    const auto& rows = control<ListView>(list, "lstterceiros");
    for (int row = 0; row < rows.count(); ++row) {
        if (rows.text(row, 0).toInt() > INT16_MAX)
            continue;
        clickRow(list, "lstterceiros", row);
        clickRow(list, "lstterceiros", row);
        return;
    }
    list.unload();
}

// ---- the operations

template <class Window>
void WindowOperations::addWalk(Operations& all, const char* window) const {
    const auto from = [](int button) {
        return [button] {
            reopen<Window>();
            click(Window::instance(), "btnNavegacao", button);
        };
    };
    const auto to = [](int button) {
        return [button] { click(Window::instance(), "btnNavegacao", button); };
    };
    const auto afterAnother = [this, from](int button) {
        return [this, from, button] {
            from(button)();
            another();
        };
    };
    all.push_back({window, "primeiro", from(3), to(0), 1, 1});
    all.push_back({window, "próximo", from(0), to(2), 40, 1});
    all.push_back({window, "anterior", from(3), to(1), 40, 1});
    all.push_back({window, "último", from(0), to(3), 1, 1});
    all.push_back({window, "próximo, depois de outra estação", afterAnother(0), to(2), 1, 1});
    all.push_back({window, "anterior, depois de outra estação", afterAnother(3), to(1), 1, 1});
}

void WindowOperations::addRegisters(Operations& all) const {
    const char* window = "bancos";
    const auto banks = []() -> QWidget& { return frmBancos::instance(); };
    const auto saveBank = [] { press<frmBancos>("cmdSalvar"); };
    all.push_back({window, "abrir", &closeAll, &show<frmBancos>});
    addWalk<frmBancos>(all, window);
    const auto typeCode = [banks] { type(banks(), "txtCodigo", "3"); };
    const auto leaveCode = [] { FormTest::press(Qt::Key_Tab); };
    all.push_back({window, "localizar pelo código",
                   [typeCode] {
                       reopen<frmBancos>();
                       typeCode();
                   },
                   leaveCode});
    all.push_back({window, "gravar novo",
                   [banks, code = 900]() mutable {
                       reopen<frmBancos>();
                       press<frmBancos>("cmdNovo");
                       type(banks(), "txtCodigo", QString::number(++code)); // else it is refused
                       type(banks(), "txtNome", "Banco Novo");
                       enter(banks(), "cmdSalvar");
                   },
                   saveBank});
    all.push_back({window, "gravar alterado",
                   [banks, other = 0]() mutable {
                       walked<frmBancos>();
                       type(banks(), "txtNome", "Banco Outro " + QString::number(++other));
                       enter(banks(), "cmdSalvar");
                   },
                   saveBank});
    all.push_back({window, "ordenar a lista", &reopen<frmBancos>,
                   [banks] { clickColumn(banks(), "lstListagem", 1); }});

    window = "clientes";
    const auto clients = []() -> QWidget& { return frmCliFor::instance(); };
    const auto saveClient = [] { press<frmCliFor>("cmdSalvar"); };
    all.push_back({window, "abrir", &closeAll, &show<frmCliFor>});
    addWalk<frmCliFor>(all, window);
    all.push_back({window, "gravar novo",
                   [clients] {
                       reopen<frmCliFor>();
                       press<frmCliFor>("cmdNovo");
                       type(clients(), "txtNome", "Cliente novo");
                       type(clients(), "txtLimiteDeCrédito", "100,00");
                       enter(clients(), "cmdSalvar");
                   },
                   saveClient});
    all.push_back({window, "gravar alterado",
                   [clients] {
                       walked<frmCliFor>();
                       type(clients(), "txtLimiteDeCrédito", "100,00");
                       enter(clients(), "cmdSalvar");
                   },
                   saveClient});

    window = "localizar cliente";
    const auto search = [] {
        control<QLineEdit>(frmlocalizar::instance(), "txtpesquisar").setText("Cliente 00001");
    };
    const auto clickFound = [] { clickRow(frmlocalizar::instance(), "LstEncontrado", 1); };
    all.push_back({window, "abrir", &closeAll, &show<frmlocalizar>});
    all.push_back({window, "digitar", &reopen<frmlocalizar>, search});
    all.push_back({window, "escolher",
                   [search, clickFound] {
                       reopen<frmlocalizar>();
                       search();
                       clickFound();
                   },
                   clickFound});
}

void WindowOperations::addEntry(Operations& all) const {
    using Entry = FrmLancarCheques;
    const char* const window = "entrada";
    const auto save = [] { press<Entry>("CmdIncluir"); };
    all.push_back({window, "abrir", &closeAll, &show<Entry>});
    addWalk<Entry>(all, window);
    all.push_back({window, "sair do cliente",
                   [] {
                       reopen<Entry>();
                       type(Entry::instance(), "txtNome", "Cliente 000011");
                   },
                   &leave});
    all.push_back({window, "sair do número",
                   [] {
                       enterCheque("900001");
                       type(Entry::instance(), "txtnumero", "123");
                   },
                   &leave});
    all.push_back({window, "sair do valor", [] { enterCheque("900002"); }, &leave});
    all.push_back({window, "gravar novo",
                   [] {
                       enterCheque("900003");
                       enter(Entry::instance(), "CmdIncluir");
                   },
                   save});
    all.push_back({window, "gravar alterado",
                   [] {
                       walked<Entry>();
                       type(Entry::instance(), "txtautorizou", "Rita");
                       enter(Entry::instance(), "CmdIncluir");
                   },
                   save});
    all.push_back({window, "excluir", &walked<Entry>, [] { press<Entry>("CmdExcluir"); }});
    all.push_back({window, "mostrar o escolhido", &reopen<Entry>,
                   [] { EXPECT_TRUE(Entry::instance().mostrarCheque(177)); }});
}

void WindowOperations::addBounced(Operations& all) const {
    using Bounced = FrmLancasSFundos;
    const char* const window = "sem fundos";
    const auto form = []() -> QWidget& { return Bounced::instance(); };
    const auto save = [] { press<Bounced>("CmdIncluir"); };
    all.push_back({window, "abrir", &closeAll, &show<Bounced>});
    addWalk<Bounced>(all, window);
    all.push_back({window, "copiar um recebido",
                   [] {
                       reopen<Bounced>();
                       press<Bounced>("CmdNovo");
                       press<Bounced>("CmdBuscar");
                       type("00000123");
                   },
                   &leave});
    all.push_back({window, "gravar novo",
                   [form] {
                       reopen<Bounced>();
                       press<Bounced>("CmdNovo");
                       type(form(), "txtcliente", "Cliente 000011");
                       type(form(), "txtbanco", "Banco 05");
                       type(form(), "txtnumero", "900004");
                       type(form(), "txtvalor", "150,00");
                       type(form(), "txtEmpresa", "Loja Um");
                       enter(form(), "CmdIncluir");
                   },
                   save});
    all.push_back({window, "gravar alterado",
                   [form] {
                       walked<Bounced>();
                       type(form(), "txtEmpresa", "Loja Dois");
                       enter(form(), "CmdIncluir");
                   },
                   save});
    all.push_back({window, "excluir", &walked<Bounced>, [] { press<Bounced>("cmdExcluir"); }});
}

void WindowOperations::addLists(Operations& all) const {
    using List = FrmLocCHTerceiros;
    const char* const window = "baixa";
    const auto chosen = [] { choose<List>("txtcliente", "Cliente 000012"); };
    const auto settle = [] {
        closeAll();
        Mirtal::modo = "Baixar";
    };
    all.push_back({window, "abrir", settle, &show<List>});
    all.push_back({window, "listar um cliente", &openList, chosen});
    all.push_back({window, "listar um banco", &openList, [] { choose<List>("txtbanco", "Raro"); }});
    all.push_back({window, "listar um dia",
                   [] {
                       openList();
                       press<List>("chkmostrar");
                       enter(List::instance(), "txtfim");
                   },
                   &leave});
    all.push_back({window, "baixar um",
                   [chosen] {
                       openList();
                       chosen();
                       clickCheckBox(List::instance(), "lstterceiros", 0);
                   },
                   [] { press<List>("cmdsalvar"); }});

    using Consulted = FrmConsultaCH;
    all.push_back({"consulta", "abrir", &closeAll, &show<Consulted>});
    all.push_back({"consulta", "de um cliente",
                   [] {
                       reopen<Consulted>();
                       type(Consulted::instance(), "txtNome", "Cliente 000011");
                   },
                   &leave});

    using Later = FrmRenegociar;
    all.push_back({"renegociar", "abrir", &closeAll, &show<Later>});
    all.push_back({"renegociar", "gravar",
                   [] {
                       reopen<Later>();
                       QTimer::singleShot(0, qApp, &WindowOperations::chooseFromList);
                       press<Later>("CmdLocalizar");
                       activate(Later::instance());
                       type(Later::instance(), "txttaxa_juros", "2,00");
                       leave();
                       type("01012027");
                       leave();
                   },
                   [] { press<Later>("CmdIncluir"); }});
}

void WindowOperations::addReports(Operations& all) const {
    all.push_back({"apagar", "abrir", &closeAll, &show<FrmApagar>});
    using Filter = FrmFiltroRelat;
    const auto received = [] {
        closeAll();
        Mirtal::modo = "relch";
    };
    all.push_back({"filtro", "abrir", received, &show<Filter>});
    const auto print = [] { press<Filter>("CmdImprimir"); };
    const auto ready = [received] {
        received();
        open<Filter>();
    };
    all.push_back({"filtro", "relatório de um dia", ready, print});
    all.push_back({"filtro", "relatório de um cliente em um dia",
                   [ready] {
                       ready();
                       choose<Filter>("txtcliente", "Cliente 000011");
                   },
                   print});
}

void WindowOperations::addAgenda(Operations& all) const {
    using Schedule = FrmAgenda;
    all.push_back({"agenda", "abrir, a semana", &closeAll, &show<Schedule>});
    all.push_back({"agenda", "um cliente em um mês",
                   [] {
                       reopen<Schedule>();
                       choose<Schedule>("txtcliente", "Cliente 000011");
                   },
                   [] { choose<Schedule>("cmbperiodo", "Mês (30 dias)"); }});
    all.push_back(
        {"agenda", "atualizar", &reopen<Schedule>, [] { press<Schedule>("cmdatualizar"); }});
    using Sheet = FrmFicha;
    all.push_back({"ficha", "abrir", &closeAll, &show<Sheet>});
    all.push_back({"ficha", "de um cliente", &reopen<Sheet>,
                   [] { choose<Sheet>("txtcliente", "Cliente 000011"); }});
    using Slip = FrmBordero;
    all.push_back({"borderô", "abrir", &closeAll, &show<Slip>});
    all.push_back({"borderô", "imprimir",
                   [] {
                       reopen<Slip>();
                       choose<Slip>("txtbanco", "Banco 05");
                   },
                   [] { press<Slip>("cmdimprimir"); }});
    using Past = FrmHistorico;
    all.push_back({"histórico", "abrir", &closeAll, &show<Past>});
    all.push_back({"histórico", "de um cliente", &reopen<Past>,
                   [] { choose<Past>("txtcliente", "Cliente 000012"); }});
    all.push_back({"histórico", "desfazer uma baixa",
                   [] {
                       reopen<Past>();
                       choose<Past>("txtoperacao", "baixa");
                       const auto& rows = control<ListView>(Past::instance(), "lsthistorico");
                       int row = 0;
                       while (rows.text(row, 1) != "baixa") // but undone already
                           ++row;
                       clickRow(Past::instance(), "lsthistorico", row);
                   },
                   [] { press<Past>("cmddesfazer"); }});
}

std::vector<WindowOperations::Operation> WindowOperations::operations() const {
    Operations all;
    addRegisters(all);
    addEntry(all);
    addBounced(all);
    addLists(all);
    addReports(all);
    addAgenda(all);
    return all;
}
