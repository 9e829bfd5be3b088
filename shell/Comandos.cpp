#include "shell/Comandos.h"

#include "agenda/FrmAgenda.h"
#include "agenda/FrmFicha.h"
#include "agenda/FrmHistorico.h"
#include "cheques/FrmConsultaCH.h"
#include "cheques/FrmLancarCheques.h"
#include "collections/FrmLancasSFundos.h"
#include "collections/FrmLocCHTerceiros.h"
#include "collections/FrmRenegociar.h"
#include "registers/frmBancos.h"
#include "registers/frmCliFor.h"
#include "reports/FrmApagar.h"
#include "reports/FrmFiltroRelat.h"
#include "shell/FrmAjuda.h"
#include "shell/frmAbout.h"
#include "shell/frmcaminho.h"

namespace Comandos {

namespace {

/// The list stands above the entry, which finds its cheques there.
void abrirEntrada() {
    FrmLancarCheques::aoLocalizar([] { FrmLocCHTerceiros::instance().showModal(); });
    FrmLancarCheques::instance().showModal();
}

constexpr Comando kClientes{nullptr, [] { frmCliFor::instance().showModal(); }};
constexpr Comando kBancos{nullptr, [] { frmBancos::instance().showModal(); }};
constexpr Comando kSair{nullptr, nullptr};
constexpr Comando kEntrada{nullptr, &abrirEntrada};
constexpr Comando kBaixa{"Baixar", [] { FrmLocCHTerceiros::instance().showModal(); }};
constexpr Comando kRenegociar{nullptr, [] { FrmRenegociar::instance().showModal(); }};
constexpr Comando kSemFundos{nullptr, [] { FrmLancasSFundos::instance().showModal(); }};
constexpr Comando kConsultar{nullptr, [] { FrmConsultaCH::instance().showModal(); }};
constexpr Comando kRelCheques{"relch", &FrmFiltroRelat::mostrar};
constexpr Comando kRelSemFundos{"relsf", &FrmFiltroRelat::mostrar};
constexpr Comando kApagar{nullptr, [] { FrmApagar::instance().showModal(); }};
constexpr Comando kDiretorio{nullptr, [] { frmcaminho::instance().showModal(); }};
constexpr Comando kSobre{nullptr, [] { frmAbout::instance().showModal(); }};

constexpr Comando kManual{nullptr, &FrmAjuda::mostrar};
constexpr Comando kAgenda{nullptr, [] { FrmAgenda::instance().showModal(); }};
constexpr Comando kFicha{nullptr, &FrmFicha::mostrar};
constexpr Comando kHistorico{nullptr, [] { FrmHistorico::instance().showModal(); }};

constexpr Entrada kArquivos[] = {
    {"mnucli",    "&Clientes", "cliente", &kClientes},
    {"mnubancos", "&Bancos",   "banco",   &kBancos  },
    {"sep1",      nullptr,     nullptr,   nullptr   },
    {"mnusair",   "&Sair",     "Sair",    &kSair    },
};
constexpr Entrada kMovimentos[] = {
    {"mnuentrada",     "&Entrada de Cheques",           "entrada",    &kEntrada   },
    {"mnubaixa",       "&Baixa de Cheques",             "baixa",      &kBaixa     },
    {"mnurenegociar",  "&Renegociar cheques",           "renegociar", &kRenegociar},
    {"mnusfundos",     "&Cadastrar Cheques sem Fundos", "voadores",   &kSemFundos },
    {"mnuconscheques", "Con&sultar CPF",                "consultar",  &kConsultar },
};
constexpr Entrada kRelatorios[] = {
    {"mnurrec",     "&Cheques recebidos",  "relcheque",   &kRelCheques  },
    {"mnursfundos", "Cheques sem &fundos", "relsemfundo", &kRelSemFundos},
};
// clang-format off
constexpr Entrada kUtilitarios[] = {
    {"mnuapagar",  "&Apagar Cheques ",    "apagar",    &kApagar}, // deliberate: the trailing blank
    {"mnucaminho", "&Diretório de dados", "diretorio", &kDiretorio},
};
// clang-format on
// Deliberate: the last two stay off for good. The first never did anything; the second would work
// on lists that nobody opens, and end the program.
constexpr Entrada kAjuda[] = {
    {"mnuabout",    "&Sobre o Sistema",   "sobre", &kSobre, true },
    {"mnuimportar", "&Importar Arquivos", nullptr, nullptr, false},
    {"mnuverif",    "&Verifica Clientes", nullptr, nullptr, false},
};
// clang-format off
constexpr Menu kMenus[] = {
    {"mnuar",    "&Arquivos",    kArquivos},
    {"mnumov",   "&Movimentos",  kMovimentos},
    {"mnurelat", "&Relatórios",  kRelatorios},
    {"mnuutil",  "&Utilitários", kUtilitarios},
    {"mnusobre", "A&juda",       kAjuda},
};
// clang-format on

// Deliberate: "Relatorio de Cheques" has no accent; the tool-tips stand as the shop knows them.
constexpr Botao kBotoes[] = {
    {"clientes",      "Clientes",        "Cadastro de Clientes",            "cliente",     &kClientes,   false},
    {"bancos",        "Bancos",          "Cadastro de Bancos",              "banco",       &kBancos,     false},
    {"cheques",       "Entrada",         "Entrada de Cheques",              "entrada",     &kEntrada,    true },
    {"baixar",        "Baixa",           "Baixar Cheques",                  "baixa",       &kBaixa,      false},
    {"negociar",      "Renegociar",      "Renegociar Cheques",              "renegociar",  &kRenegociar, false},
    {"lancarsf",      "Sem fundos",      "Lançar Cheques sem Fundos",      "voadores",    &kSemFundos,  false},
    {"consulta",      "Consulta",        "Consulta CPF",                    "consultar",   &kConsultar,  false},
    {"relatcheque",   "Rel. recebidos",  "Relatorio de Cheques",            "relcheque",   &kRelCheques, true },
    {"relatsemfundo", "Rel. sem fundos", "Relatório de cheques sem fundo", "relsemfundo",
     &kRelSemFundos,                                                                                     false},
    {"sair",          "Sair",            "Sair do Sistema",                 "Sair",        &kSair,       true },
};

constexpr Tecla kTeclas[] = {
    {Qt::Key_F1, &kManual,    "FrmAjuda",     nullptr            },
    {Qt::Key_F6, &kFicha,     "FrmFicha",     "&Ficha do cliente"},
    {Qt::Key_F7, &kAgenda,    "FrmAgenda",    "&Agenda"          },
    {Qt::Key_F8, &kHistorico, "FrmHistorico", "&Histórico"      },
};

} // namespace

std::span<const Menu> menus() { return kMenus; }
std::span<const Botao> botoes() { return kBotoes; }
std::span<const Tecla> teclas() { return kTeclas; }

} // namespace Comandos
