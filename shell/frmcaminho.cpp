#include "shell/frmcaminho.h"

#include "controls/window/WindowList.h"
#include "shell/Configuracao.h"
#include "shell/DatabaseFolder.h"

#include <QApplication>
#include <QDir>
#include <QScreen>

namespace {

// Where the window stands on the screen, in twips, of which 15 are a pixel.
constexpr int kEsquerda = 1600;
constexpr int kTopo = 1900;

int emPixels(int twips) { return qRound(twips / 15.0); }

} // namespace

frmcaminho::frmcaminho() {
    setupUi(this);
    enterAsTab({Drive1, txtcaminho});
    closesWith(cmdsair);
    on(Drive1, &DriveList::currentIndexChanged, &frmcaminho::Drive1_Change);
    on(Dir1, &FolderTree::pathChanged, &frmcaminho::Dir1_Change);
    on(Dir1, &FolderTree::folderClicked, &frmcaminho::Dir1_Click);
    on(File1, &FileList::fileClicked, &frmcaminho::File1_Click);
    lostFocus(txtcaminho, &frmcaminho::txtcaminho_LostFocus);
    on(cmdemitir, &QPushButton::clicked, &frmcaminho::cmdemitir_Click);
    on(cmdcancelar, &QPushButton::clicked, &frmcaminho::cmdcancelar_Click);
    on(cmdsair, &QPushButton::clicked, &frmcaminho::cmdsair_Click);
}

frmcaminho& frmcaminho::instance() { return WindowList::instance().one<frmcaminho>(); }

void frmcaminho::Form_Load() {
    posicionar();
    const QString& pasta = Mirtal::DatabaseFolder;
    Drive1->setDriveOf(pasta.isEmpty() ? QDir::currentPath() : pasta);
    if (!pasta.isEmpty())
        Dir1->setPath(pasta);
    txtcaminho->setText(pasta);
    nothingTyped();
}

void frmcaminho::posicionar() {
    const QWidget* dono = QApplication::activeWindow();
    const QRect tela = (dono ? dono->screen() : screen())->geometry();
    move(tela.topLeft() + QPoint(emPixels(kEsquerda), emPixels(kTopo)));
}

void frmcaminho::Drive1_Change() { Dir1->setDrive(Drive1->drive()); }

void frmcaminho::Dir1_Change() { File1->setPath(Dir1->path()); }

void frmcaminho::Dir1_Click() { txtcaminho->setText(QDir::toNativeSeparators(Dir1->path())); }

// The file's folder: its name is always the same.
void frmcaminho::File1_Click() { txtcaminho->setText(QDir::toNativeSeparators(File1->path())); }

// Nobody who looks at the window reads a password in an address.
void frmcaminho::txtcaminho_LostFocus() {
    if (const QString mantida = Configuracao::semSenha(txtcaminho->text());
        mantida != txtcaminho->text())
        txtcaminho->setText(mantida);
}

void frmcaminho::cmdemitir_Click() {
    Configuracao::gravarPasta(Configuracao::pastaDoPrograma(), txtcaminho->text());
    nothingTyped();
}

void frmcaminho::cmdcancelar_Click() {
    txtcaminho->clear();
    Drive1->setDriveOf(Configuracao::pastaDoPrograma());
    Dir1->setPath(Configuracao::pastaDoPrograma());
}

void frmcaminho::cmdsair_Click() { unload(); }

#include "shell/moc_frmcaminho.cpp"
