#pragma once

#include "controls/window/Form.h"
#include "controls/window/NavigationBar.h"
#include "support/FormTest.h"

#include <QLineEdit>
#include <QPushButton>
#include <QStringList>
#include <QVBoxLayout>

#include <functional>

/// What the windows under test did, in order; emptied by each test.
inline QStringList journal;

/// A window with a box for digits, two for texts and three kinds of buttons.
class frmTeste final : public Form {
public:
    frmTeste() {
        auto* column = new QVBoxLayout(this);
        const auto add = [&](auto* control, const char* name) {
            control->setObjectName(name);
            column->addWidget(control);
        };
        add(txtCodigo, "txtCodigo");
        add(txtNome, "txtNome");
        add(txtLivre, "txtLivre");
        add(btnNavegacao, "btnNavegacao");
        add(cmdSalvar, "cmdSalvar");
        add(cmdFechar, "cmdFechar");
        cmdSalvar->setDefault(true); // as a design may have it

        prompts({
            {txtCodigo, "Código."},
            {txtNome,   "Nome."   }
        });
        enterAsTab({txtNome});
        digitsOnly(txtCodigo);
        onEnter(txtLivre, &frmTeste::txtLivre_Enter);
        connect(txtLivre, &QLineEdit::returnPressed, this, [] { journal << "recebeu Enter"; });
        closesWith(cmdFechar);
        on(cmdSalvar, &QPushButton::clicked, &frmTeste::cmdSalvar_Click);
        on(cmdFechar, &QPushButton::clicked, &frmTeste::cmdFechar_Click);
        on(btnNavegacao, &NavigationBar::clicked, &frmTeste::btnNavegacao_Click);
        gotFocus(txtNome, &frmTeste::txtNome_GotFocus);
        lostFocus(txtNome, &frmTeste::txtNome_LostFocus);
        ++built;
    }
    static frmTeste& instance() { return WindowList::instance().one<frmTeste>(); }

    QLineEdit* txtCodigo = new QLineEdit;
    QLineEdit* txtNome = new QLineEdit;
    QLineEdit* txtLivre = new QLineEdit;
    NavigationBar* btnNavegacao = new NavigationBar;
    QPushButton* cmdSalvar = new QPushButton("&Salvar");
    QPushButton* cmdFechar = new QPushButton("&Fechar");

    inline static int built = 0;
    std::function<void()> onLoad, onSave, onLeave, onEntered;

private:
    void Form_Load() override {
        journal << "load";
        if (onLoad)
            onLoad();
    }
    void Form_Unload() override { journal << "unload"; }
    void cmdSalvar_Click() {
        journal << "salvar";
        if (onSave)
            onSave();
    }
    void cmdFechar_Click() {
        journal << "fechar";
        unload();
    }
    void btnNavegacao_Click(int index) { journal << QString("navegar %1").arg(index); }
    void txtLivre_Enter() {
        if (onEntered)
            onEntered();
    }
    void txtNome_GotFocus() { journal << "entrou"; }
    void txtNome_LostFocus() {
        journal << "saiu";
        if (onLeave)
            onLeave();
    }
};

/// Tests of that window.
class FormLife : public FormTest {
protected:
    FormLife() {
        journal.clear();
        frmTeste::built = 0;
    }
    static frmTeste& opened() {
        auto& form = open<frmTeste>();
        journal.clear();
        return form;
    }
    using Journal = QStringList;
};
