#include "shell/frmAbout.h"

#include "controls/Icons.h"
#include "controls/Style.h"
#include "controls/WindowList.h"

frmAbout::frmAbout() {
    setupUi(this);
    lblProduto->setFont(headingFont());
    imgProduto->setPixmap(Icons::named("valtrino").pixmap({96, 96}, devicePixelRatio()));
}

frmAbout& frmAbout::instance() { return WindowList::instance().one<frmAbout>(); }
