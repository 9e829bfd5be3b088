#include "shell/frmAbout.h"

#include "controls/look/Icons.h"
#include "controls/look/Style.h"
#include "controls/window/WindowList.h"

frmAbout::frmAbout() {
    setupUi(this);
    lblProduto->setFont(headingFont());
    lblProduto->setToolTip("Versão " VALTRINO_VERSION);
    imgProduto->setPixmap(Icons::named("valtrino").pixmap({96, 96}, devicePixelRatio()));
}

frmAbout& frmAbout::instance() { return WindowList::instance().one<frmAbout>(); }

#include "shell/moc_frmAbout.cpp"
