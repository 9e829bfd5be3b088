// "Valtrino (novo banco de dados)": who has just installed the program chooses the folder of the
// shop's database, which is made there if there is none.
#include "ado/ConnectionString.h"
#include "controls/folder/FileChooser.h"
#include "controls/look/Icons.h"
#include "controls/look/Style.h"
#include "controls/window/MessageBox.h"
#include "jet/Disk.h"
#include "jet/Error.h"
#include "schema/ShopSchema.h"
#include "shell/Configuracao.h"

#include <QApplication>
#include <QDir>
#include <QProcess>

#include <cstdlib>
#include <filesystem>

namespace {

constexpr const char* kTitulo = "Valtrino (novo banco de dados)";

/// Where a database may be already, else the user's own folder.
QString pastaProposta(const QString& programa) {
    const QString atual = Configuracao::pastaDosDados(programa);
    return QFileInfo(atual).isWritable() && atual != programa ? atual : QDir::homePath();
}

/// Whether the program would find a file of that name, which is then as it stands there: one in
/// other capitals isn't to be hidden by an empty one.
bool achar(std::filesystem::path& arquivo) {
    try {
        arquivo = ado::existingFile(arquivo);
        return true;
    } catch (const jet::Error& erro) {
        if (erro.code() != jet::Errc::notFound)
            throw;
        return false;
    }
}

/// @return whether there is a database in the folder that the program opens from now on.
bool preparar(const QString& programa) {
    showMessage("Escolha a pasta em que fica o banco de dados da loja.\n\n"
                "Se nela já há um (automacao.mdb), é esse que o Valtrino passa a usar; se não há, "
                "um vazio é criado.",
                kTitulo, MessageIcon::information);
    const auto escolhida = chooseFile(
        {FileChoice::folder, "Pasta do banco de dados", pastaProposta(programa), QString()});
    if (!escolhida)
        return false;
    const QString pasta = QDir::toNativeSeparators(*escolhida);
    std::filesystem::path arquivo = jet::Disk::pathOf(pasta.toStdString()) / "automacao.mdb";
    const bool havia = achar(arquivo);
    if (!havia)
        shop::createFile(arquivo, jet::Version::jet4);
    Configuracao::gravarPasta(programa, pasta);
    showMessage((havia ? "O Valtrino passa a usar o banco de dados\n"
                       : "Foi criado um banco de dados vazio:\n") +
                    QString::fromStdString(arquivo.string()),
                kTitulo, MessageIcon::information);
    return true;
}

} // namespace

int main(int argc, char** argv) {
    QApplication aplicacao(argc, argv);
    QApplication::setApplicationName("Valtrino");
    QApplication::setQuitOnLastWindowClosed(false); // between the dialogs there is none
    aplicarEstilo(aplicacao);
    QApplication::setWindowIcon(Icons::named("valtrino"));
    const QString programa = Configuracao::pastaDoPrograma();
    try {
        if (!preparar(programa))
            return EXIT_FAILURE;
    } catch (const std::exception& erro) {
        showMessage(erro.what(), kTitulo, MessageIcon::critical);
        return EXIT_FAILURE;
    }
    const QFileInfo este(QCoreApplication::applicationFilePath());
    const QString ending = este.suffix().isEmpty() ? "" : '.' + este.suffix(); // ".exe"
    return QProcess::startDetached(programa + "/valtrino" + ending, {}) ? EXIT_SUCCESS
                                                                        : EXIT_FAILURE;
}
