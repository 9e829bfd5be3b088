// A day's work by who hears the windows and doesn't see them.
#include "shell/ScreenReader.h"

#include <QFileInfo>

#include <gmock/gmock.h>

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr auto kButton = QAccessible::PushButton;
constexpr auto kField = QAccessible::EditableText;
constexpr auto kDropDown = QAccessible::ComboBox;
constexpr auto kTick = QAccessible::CheckBox;
constexpr auto kList = QAccessible::Tree;
constexpr auto kStatus = QAccessible::StaticText;
constexpr auto kNews = QAccessible::Notification;
constexpr auto kPages = QAccessible::Document;

class DayHeard : public Everywhere<ScreenReader> {
protected:
    void SetUp() override {
        ScreenReader::SetUp();
        MDICheques::mostrarMensagens();
        MDICheques::instance().show();
    }

    static void enterACheque() {
        QAccessibleInterface& entry = window("Cadastro de Cheques Recebidos");
        EXPECT_EQ(read(entry, kStatus, "Registro"), "Novo");
        fill(entry, kDropDown, "Nome do Cliente", "Carla");
        fill(entry, kDropDown, "Banco", "agro");
        fill(entry, kField, "Agência", "0042");
        fill(entry, kField, "Nº Cheque", "000555");
        fill(entry, kField, "Dt.Emissão", "01032026");
        fill(entry, kField, "Dt.Vencto", "01042026");
        fill(entry, kField, "Valor", "80");
        EXPECT_EQ(read(entry, kDropDown, "Nome do Cliente"), "Carla Reis");
        EXPECT_EQ(read(entry, kDropDown, "Banco"), "Agrobanco");
        EXPECT_EQ(read(entry, kField, "Dt.Vencto"), "01/04/2026");
        EXPECT_EQ(read(entry, kField, "Valor"), "80,00");
        act(entry, kButton, "Salvar");
        EXPECT_EQ(read(entry, kField, "Nº Cheque"), "");
        act(entry, kButton, "Fim do Arquivo");
        EXPECT_EQ(read(entry, kStatus, "Registro"), "Lançamento 3");
        EXPECT_EQ(read(entry, kField, "Nº Cheque"), "000555");
        act(entry, kButton, "Sair");
    }

    static void settleIt() {
        QAccessibleInterface& form = window("Baixa de cheques recebidos");
        act(form, kTick, "descontar no banco");
        QAccessibleInterface& list = find(form, kList, "Cheques");
        ASSERT_TRUE(hasRows(list, 3));
        focusOn(list);
        comeTo(list, "Lançamento 3, Nº Cheque 000555, Nome do Cliente Carla Reis, Agência 0042, "
                     "Dt.Vencto 01/04/2026, Valor R$ 80,00");
        press(Qt::Key_Space);
        EXPECT_TRUE(list.tableInterface()->cellAt(2, 0)->state().checked);
        EXPECT_NE(seek(form, kStatus, "Total Selecionado:80,00"), nullptr);
        act(form, kButton, "Salvar");
        EXPECT_EQ(list.tableInterface()->rowCount(), 0);
        act(form, kButton, "Sair");
    }

    static void consultAClient() {
        QAccessibleInterface& form = window("Consultar CPF");
        fill(form, kDropDown, "Nome", "ana");
        EXPECT_EQ(read(form, kDropDown, "Nome"), "Ana Costa");
        EXPECT_EQ(read(form, kField, "Número de Cheques"), "1");
        EXPECT_EQ(read(form, kField, "Total em R$"), "10,00");
        QAccessibleInterface& list = find(form, kList, "Relação de Cheques Sem Fundos");
        EXPECT_TRUE(hasRows(list, 2));
        focusOn(list);
        comeTo(list, "Lançamento 2, Cheque 000902, Nome do Banco Agrobanco, Valor 75,00, Empresa "
                     "Loja Um");
        act(form, kButton, "Sair");
    }
};

INSTANTIATE_TEST_SUITE_P(, DayHeard, everywhere(), keptName);

TEST_P(DayHeard, AChequeIsEnteredSettledConsultedAndReported) {
    whileModal<FrmLancarCheques>([](FrmLancarCheques&) { enterACheque(); });
    act(window("Valtrino"), kButton, "Entrada de Cheques");
    whileModal<FrmLocCHTerceiros>([](FrmLocCHTerceiros&) { settleIt(); });
    act(window("Valtrino"), kButton, "Baixar Cheques");
    whileModal<FrmConsultaCH>([](FrmConsultaCH&) { consultAClient(); });
    act(window("Valtrino"), kButton, "Consulta CPF");

    act(window("Valtrino"), kButton, "Relatorio de Cheques");
    QAccessibleInterface& filter = window("Relatório de Cheques Recebidos");
    fill(filter, kField, "Data inicial", "01012026");
    fill(filter, kField, "Data final", "31122026");
    act(filter, kButton, "Imprimir");
    QAccessibleInterface& main = window("Valtrino - [Relatório de Cheques]");
    ASSERT_TRUE(QTest::qWaitFor([&] { return seek(main, kStatus, "Página 1 de 1") != nullptr; }));
    EXPECT_THAT(read(main, kPages, "Páginas do relatório"),
                AllOf(HasSubstr("000101"), HasSubstr("000102"), HasSubstr("260,00"),
                      Not(HasSubstr("000555"))));
    const QTemporaryDir folder;
    const QString path = folder.filePath("Cheques.pdf");
    expectFile({FileChoice::newFile, "Salvar como PDF", "Relatório de Cheques.pdf",
                "Documento PDF (*.pdf)"},
               path);
    act(main, kButton, "Salvar como PDF");
    EXPECT_EQ(read(main, kNews, "Aviso do relatório"), "Salvo em " + path.toStdString());
    EXPECT_TRUE(QFileInfo::exists(path));
    act(main, kButton, "Fechar o relatório");
    EXPECT_EQ(seek(window("Valtrino"), kPages, "Páginas do relatório"), nullptr);
}

} // namespace
