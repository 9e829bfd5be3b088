// The checks that every window is held to must find what they look for.
#include "support/FormChecks.h"

#include "controls/box/ListView.h"
#include "controls/window/Form.h"
#include "controls/window/NavigationBar.h"
#include "support/FormTest.h"

#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {

class frmExame final : public Form {
public:
    frmExame() {
        auto* grid = new QGridLayout(this);
        lstListagem->setObjectName("lstListagem");
        txtNome->setObjectName("txtNome");
        cmdSalvar->setObjectName("cmdSalvar");
        lstListagem->setColumns({
            {"Código",       1},
            {"Nome do Banco", 3}
        });
        grid->addWidget(lblNome, 0, 0);
        grid->addWidget(txtNome, 0, 1);
        grid->addWidget(lblLista, 1, 0);
        grid->addWidget(lstListagem, 1, 1);
        grid->addWidget(new NavigationBar, 2, 0);
        grid->addWidget(cmdSalvar, 2, 1);
        lblNome->setBuddy(txtNome);
        lblLista->setBuddy(lstListagem);
        resize(700, 400);
    }
    static frmExame& instance() { return WindowList::instance().one<frmExame>(); }

    QLabel* lblNome = new QLabel("&Nome:");
    QLineEdit* txtNome = new QLineEdit;
    QLabel* lblLista = new QLabel("&Bancos :");
    ListView* lstListagem = new ListView;
    QPushButton* cmdSalvar = new QPushButton("&Salvar");
};

using FormChecks = FormTest;

TEST_F(FormChecks, FindNothingInAGoodWindow) {
    auto& form = open<frmExame>();
    EXPECT_EQ(faultsOf(form), QStringList());
    EXPECT_EQ(form.txtNome->accessibleName(), "Nome");
    EXPECT_EQ(form.lstListagem->accessibleName(), "Bancos");
}

TEST_F(FormChecks, FindAControlWithoutAName) {
    frmExame::instance().lblNome->setBuddy(nullptr);
    EXPECT_EQ(controlsWithoutName(open<frmExame>()),
              QStringList("no accessible name: txtNome (QLineEdit)"));
}

TEST_F(FormChecks, FindAnAccessKeyThatIsThereTwice) {
    auto& form = open<frmExame>();
    form.cmdSalvar->setText("Salvar &novo");
    ASSERT_EQ(sharedAccessKeys(form).size(), 1);
    EXPECT_TRUE(sharedAccessKeys(form)[0].startsWith("Alt+N"));
}

TEST_F(FormChecks, FindTextThatIsCut) {
    auto& form = open<frmExame>();
    form.cmdSalvar->setText("Salvar este cheque e todos os outros");
    form.cmdSalvar->resize(60, 24);
    form.lstListagem->header()->resizeSection(1, 20);
    EXPECT_EQ(cutTexts(form).size(), 2) << cutTexts(form).join('\n').toStdString();
}

TEST_F(FormChecks, FindAValueThatIsCut) {
    auto& form = open<frmExame>();
    form.txtNome->setText("1234567890");
    EXPECT_EQ(cutTexts(form), QStringList());
    form.txtNome->setMinimumWidth(0);
    form.txtNome->resize(60, form.txtNome->height());
    EXPECT_EQ(cutTexts(form), QStringList("text is cut: txtNome (QLineEdit)"));
    form.txtNome->clear();
    EXPECT_EQ(cutTexts(form), QStringList());
    form.txtNome->setMaxLength(10);
    EXPECT_EQ(cutTexts(form), QStringList("text is cut: txtNome (QLineEdit)"));
}

TEST_F(FormChecks, FindWhatStandsOverAnother) {
    auto& form = open<frmExame>();
    EXPECT_EQ(overlaps(form), QStringList());
    form.lblNome->resize(form.width() / 2, form.lblNome->height());
    EXPECT_EQ(overlaps(form).size(), 1) << overlaps(form).join('\n').toStdString();
    form.lblNome->resize(20, form.lblNome->height());
    form.cmdSalvar->move(form.width() - 10, form.cmdSalvar->y());
    EXPECT_EQ(overlaps(form), QStringList("reaches out: cmdSalvar (QPushButton)"));
}

} // namespace
