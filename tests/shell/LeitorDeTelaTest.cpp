// What a screen reader finds in the windows: everything has a name, what it holds is its value, and
// changes are told.
#include "print/PageView.h"
#include "shell/BarraDeStatus.h"
#include "shell/CopiaDeSeguranca.h"
#include "shell/ScreenReader.h"

#include <QLabel>

#include <gmock/gmock.h>

#include <map>
#include <set>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Role = QAccessible::Role;

bool holdsAValue(Role role) {
    static const std::set<Role> kRoles = {QAccessible::EditableText, QAccessible::ComboBox,
                                          QAccessible::SpinBox, QAccessible::Document};
    return kRoles.contains(role);
}

bool isControl(Role role) {
    static const std::set<Role> kRoles = {QAccessible::PushButton, QAccessible::ButtonMenu,
                                          QAccessible::CheckBox,   QAccessible::RadioButton,
                                          QAccessible::Tree,       QAccessible::Table,
                                          QAccessible::List,       QAccessible::ColumnHeader};
    return holdsAValue(role) || kRoles.contains(role);
}

class EverythingSpoken : public ScreenReader {
protected:
    static std::string called(const Spoken& spoken) {
        const QObject* object = spoken.at->object();
        return (object ? object->objectName() + " (" + object->metaObject()->className() + ")"
                       : QString("part"))
                   .toStdString() +
               " \"" + spoken.name.toStdString() + "\"";
    }
    static std::vector<std::string> faults(QWidget& window) {
        std::vector<std::string> found;
        std::map<std::pair<Role, QString>, int> times;
        for (const Spoken& spoken : allOf(window)) {
            if (spoken.role == QAccessible::StaticText && spoken.name.trimmed().isEmpty())
                found.push_back("a text without words: " + called(spoken));
            if (!spoken.value.isEmpty() && !spoken.at->valueInterface() &&
                !spoken.at->tableInterface() && textOf(*spoken.at) != spoken.value)
                found.push_back("a value that can't be read: " + called(spoken));
            if (!isControl(spoken.role))
                continue;
            if (spoken.name.trimmed().isEmpty())
                found.push_back("without a name: " + called(spoken));
            if (spoken.name.endsWith(':') || spoken.name.contains('&'))
                found.push_back("a name with a label's signs: " + called(spoken));
            if (holdsAValue(spoken.role) && !spoken.value.isEmpty() && spoken.value == spoken.name)
                found.push_back("named by what it holds: " + called(spoken));
            if (++times[{spoken.role, spoken.name}] == 2)
                found.push_back("twice: " + called(spoken));
        }
        return found;
    }
};

TEST_F(EverythingSpoken, HasANameAndAReadableValueAndNothingIsThereTwice) {
    for (const State& state : states())
        EXPECT_THAT(faults(state.show()), IsEmpty()) << state.name;
}

TEST_F(EverythingSpoken, PromptsAreValuesAndDescriptions) {
    auto& main = MDICheques::instance();
    MDICheques::mostrarMensagens();
    main.show();
    auto& form = open<FrmLancarCheques>();
    const QString prompt = control<QLabel>(main, "pnlMensagem").text();
    EXPECT_NE(prompt, "");
    EXPECT_EQ(
        read(*QAccessible::queryAccessibleInterface(&main), QAccessible::StaticText, "Mensagem"),
        prompt.toStdString());
    EXPECT_THAT(find(*QAccessible::queryAccessibleInterface(&form), QAccessible::ComboBox, "Banco")
                    .text(QAccessible::Description)
                    .toStdString(),
                HasSubstr("banco"));
}

TEST_F(EverythingSpoken, TheHintOfEachFieldIsItsDescription) {
    int hints = 0;
    for (const State& state : states()) {
        QWidget& window = state.show();
        activate(window);
        for (auto* field : window.findChildren<QWidget*>()) {
            if (!(field->focusPolicy() & Qt::TabFocus) || field->focusProxy() ||
                !field->isVisible() || !field->isEnabled())
                continue;
            field->setFocus();
            if (!field->hasFocus()) // leaving a field may lead elsewhere
                field->setFocus();
            ++hints;
            EXPECT_THAT(QAccessible::queryAccessibleInterface(field)
                            ->text(QAccessible::Description)
                            .toStdString(),
                        HasSubstr(prompt().toStdString()))
                << state.name << ": " << field->objectName().toStdString();
        }
    }
    EXPECT_GT(hints, 100);
}

class StateSpoken : public ScreenReader {
protected:
    static QAccessibleInterface& shown(const std::string& name) {
        for (const State& state : states())
            if (state.name == name)
                return *QAccessible::queryAccessibleInterface(&state.show());
        throw std::runtime_error("no window in the state " + name);
    }
    /// As readers go through a longer text.
    static std::vector<std::string> lines(const QAccessibleTextInterface& text) {
        std::vector<std::string> all;
        int start = 0;
        int end = 0;
        for (int at = 0; at < text.characterCount(); at = std::max(end, at + 1))
            all.push_back(text.textAtOffset(at, QAccessible::LineBoundary, &start, &end)
                              .trimmed()
                              .toStdString());
        return all;
    }
};

TEST_F(StateSpoken, TheReportIsReadLineByLine) {
    const std::string today = QDate::currentDate().toString("dd/MM/yyyy").toStdString();
    EXPECT_THAT(lines(*find(shown("relatorio"), QAccessible::Document, "Páginas do relatório")
                           .textInterface()),
                ElementsAre("Relatório de Cheques Página: 1",
                            "Referente ao período: 01/01/2026 a 31/12/2026 Data: " + today,
                            "Cheque Nome Dt. Emissão Valor Cheque Banco Bom Para",
                            "000101 Ana Costa 01/03/2026 10,00 Banco Norte 01/04/2026",
                            "000102 Bento Dias 01/03/2026 250,00 Banco Norte 01/04/2026",
                            "Total: 260,00"));
}

TEST_F(StateSpoken, EachRowOfAListTellsEachColumnsNameAndWhatStandsThere) {
    const std::vector<std::string> cheques = {
        "Lançamento 1, Nº Cheque 000101, Nome do Cliente Ana Costa, Agência 0042, Dt.Vencto "
        "01/04/2026, Valor R$ 10,00",
        "Lançamento 2, Nº Cheque 000102, Nome do Cliente Bento Dias, Agência 0042, Dt.Vencto "
        "01/04/2026, Valor R$ 250,00"};
    const struct {
        const char* state;
        const char* list;
        std::vector<std::string> rows;
    } lists[] = {
        {"bancos",
         "Listagem de bancos",                        {"Código 104, Nome Banco Norte", "Código 237, Nome Agrobanco"}                     },
        {"localizar-achados", "Clientes encontrados", {"Nome Ana Costa, Código 2"}                                                        },
        {"baixa",             "Cheques",              cheques                                                                              },
        {"cheques",           "Cheques",              cheques                                                                              },
        {"consulta-cliente",
         "Relação de Cheques Sem Fundos",           {"Lançamento 1, Cheque 000901, Nome do Banco Agrobanco, Valor 75,00, Empresa Loja Um",
          "Lançamento 2, Cheque 000902, Nome do Banco Agrobanco, Valor 75,00, Empresa Loja Um"}},
    };
    for (const auto& [state, name, expected] : lists) {
        QAccessibleInterface& list = find(shown(state), QAccessible::Tree, name);
        EXPECT_TRUE(hasRows(list, static_cast<int>(expected.size()))) << state;
        std::vector<std::string> heard;
        heard.reserve(expected.size());
        for (int i = 0; i < list.tableInterface()->rowCount(); ++i)
            heard.push_back(row(list, i));
        EXPECT_EQ(heard, expected) << state;
    }
}

TEST_F(StateSpoken, ABoxTickedByItsActionDoesWhatAClickDoes) {
    QAccessibleInterface& form = shown("baixa");
    QAccessibleInterface& box = find(form, QAccessible::CheckBox, "descontar no banco");
    QAccessibleInterface& list = find(form, QAccessible::Tree, "Cheques");
    EXPECT_TRUE(hasRows(list, 2));
    EXPECT_TRUE(box.state().checkable);
    EXPECT_TRUE(box.state().checked);
    act(form, QAccessible::CheckBox, "descontar no banco");
    EXPECT_FALSE(box.state().checked);
    EXPECT_EQ(list.tableInterface()->rowCount(), 0);
}

class ChangeTold : public StateSpoken {
protected:
    /// What is told while the work is done.
    static std::vector<std::string> heardOf(const std::function<void()>& work) {
        told().clear();
        work();
        return told();
    }
};

TEST_F(ChangeTold, ThePromptOfTheFieldThatIsComeTo) {
    MDICheques::mostrarMensagens();
    MDICheques::instance().show();
    auto& form = open<FrmLancarCheques>();
    EXPECT_THAT(heardOf([&] { enter(form, "txtagencia"); }),
                Contains("text Mensagem: Digite o nº da Agência"));
}

TEST_F(ChangeTold, WhichRecordIsOnShow) {
    auto& form = open<FrmLancarCheques>();
    EXPECT_THAT(heardOf([&] { click(form, "btnNavegacao", 0); }),
                Contains("text Registro: Lançamento 1"));
    EXPECT_THAT(heardOf([&] { click(form, "CmdNovo"); }), Contains("text Registro: Novo"));
    EXPECT_THAT(heardOf([&] { click(form, "CmdNovo"); }), Not(Contains(HasSubstr("Registro"))));
}

TEST_F(ChangeTold, WhatHasBeenTypedAndCompletedInADropDownList) {
    auto& form = open<FrmLancarCheques>();
    enter(form, "txtNome");
    EXPECT_THAT(heardOf([] { type("c"); }), ElementsAre("text Nome do Cliente: Carla Reis"));
    EXPECT_THAT(heardOf([] { type("a"); }), IsEmpty());
}

TEST_F(ChangeTold, ATickInAList) {
    QAccessibleInterface& form = shown("baixa");
    focusOn(find(form, QAccessible::Tree, "Cheques"));
    EXPECT_THAT(heardOf([] { press(Qt::Key_Space); }), ElementsAre("tick Lançamento 1: yes"));
    EXPECT_THAT(heardOf([] { press(Qt::Key_Space); }), ElementsAre("tick Lançamento 1: no"));
}

TEST_F(ChangeTold, TheNewsOfTheDaysCopyAtOnce) {
    auto& main = MDICheques::instance();
    main.show();
    auto& bar = control<BarraDeStatus>(main, "StatusBar1");
    bar.mostrarNoticia("Cópia feita."); // told by its coming up
    EXPECT_EQ(read(window("Valtrino"), QAccessible::Notification, "Notícia"), "Cópia feita.");
    EXPECT_THAT(heardOf([&] { bar.mostrarNoticia("Cópia conferida."); }),
                Contains("notification Notícia: Cópia conferida."));
}

TEST_F(ChangeTold, WhatIsWrongWithTheDatabaseAtOnceAndOnce) {
    auto& main = MDICheques::instance();
    main.show();
    auto& bar = control<BarraDeStatus>(main, "StatusBar1");
    QAccessibleInterface& told = window("Valtrino");
    EXPECT_EQ(seek(told, QAccessible::Notification, "Aviso"), nullptr);
    bar.mostrarDano(Dano{"A página 7 não pode ser lida.", std::nullopt}); // told by its coming up
    EXPECT_EQ(read(told, QAccessible::Notification, "Aviso"),
              "Arquivo com erros. A página 7 não pode ser lida.");
    const Dano dano{"A página 9 não pode ser lida.", std::nullopt};
    EXPECT_THAT(heardOf([&] { bar.mostrarDano(dano); }),
                Contains("notification Aviso: Arquivo com erros. A página 9 não pode ser lida."));
    EXPECT_THAT(heardOf([&] {
                    bar.mostrarDano(dano);
                    bar.mostrarConsulta();
                }),
                IsEmpty());
    bar.mostrarDano(std::nullopt);
    EXPECT_EQ(seek(told, QAccessible::Notification, "Aviso"), nullptr);
}

TEST_F(ChangeTold, WhatHasBecomeOfTheReportAtOnce) {
    QAccessibleInterface& report = shown("relatorio");
    EXPECT_EQ(seek(report, QAccessible::Notification, "Aviso do relatório"), nullptr);
    auto& view = control<PageView>(frmRel_ChequesSF::instance(), "pages");
    view.setFocus();
    view.markAll();
    press(Qt::Key_C, Qt::ControlModifier); // told by its coming up
    EXPECT_EQ(read(report, QAccessible::Notification, "Aviso do relatório"),
              "O texto marcado foi copiado.");
}

} // namespace
