#include "shell/dbconectar.h"

#include "ado/ConnectionString.h"
#include "jet/Error.h"
#include "shell/Configuracao.h"
#include "shell/Mirtal.h"

#include <memory>

namespace {

constexpr char kProvedor[] =
    "Provider=Microsoft.Jet.OLEDB.3.51;Persist Security Info=False;Data Source=";
constexpr char kArquivo[] = "\\automacao.mdb";

std::unique_ptr<dbconectar>& unico() {
    static std::unique_ptr<dbconectar> objeto;
    return objeto;
}

// The only help there is when the shop's file isn't where the program looks for it: no window opens
// then, the folder chooser neither.
jet::Error falhaAoAbrir(const jet::Error& causa) {
    return {causa.code(),
            QString("Não foi possível abrir a base de dados em\n%1%2\n\n%3\n\n"
                    "A pasta da base é a primeira linha do arquivo\n%4\n"
                    "(sem esse arquivo, é a pasta do programa). Coloque a base nessa pasta ou "
                    "corrija o arquivo, e abra o programa de novo.")
                .arg(Mirtal::DatabaseFolder, kArquivo, causa.what(),
                     Configuracao::caminho(Configuracao::pastaDoPrograma()))
                .toStdString()};
}

} // namespace

dbconectar& dbconectar::instance() {
    if (!unico())
        unico().reset(new dbconectar);
    return *unico();
}

void dbconectar::descartar() { unico().reset(); }

// Deliberate: nothing is put between folder and file name and nothing taken away, so a folder that
// ends in a backslash gives two. Only one that would break the string is put in quotes.
dbconectar::dbconectar() {
    const QString arquivo = Mirtal::DatabaseFolder + kArquivo;
    Automacao.setConnectionString(kProvedor + ado::quotedValue(arquivo.toStdString()));
}

void dbconectar::abrir() {
    try {
        rsBancos.Open("bancos", Automacao);
        rsBancos.addAlias("banco", "nome"); // as the purge asks for a bank by its name
        rsCliente.Open("select * from cliente_fornecedor where tipo=true", Automacao);
        rsCheques.Open("Cheques", Automacao);
        rsSemFundos.Open("semfundos", Automacao);
    } catch (const jet::Error& causa) {
        throw falhaAoAbrir(causa);
    }
}

bool dbconectar::aberto() const { return rsSemFundos.State() == ado::State::Open; }

void dbconectar::desfazer() {
    for (ado::Recordset* rs : {&rsCheques, &rsCliente, &rsBancos, &rsSemFundos})
        rs->CancelUpdate();
    if (Automacao.inTransaction())
        Automacao.RollbackTrans();
}

void dbconectar::fechar() {
    for (ado::Recordset* rs : {&rsCheques, &rsCliente, &rsBancos, &rsSemFundos})
        rs->Close();
    Automacao.Close();
}
