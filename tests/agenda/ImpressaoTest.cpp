// What the agenda gives away: its list on paper, a calendar, a deposit slip.
#include "agenda/Agenda.h"
#include "agenda/Desfazer.h"
#include "agenda/FrmBordero.h"
#include "agenda/JanelaDeImpressao.h"
#include "print/ReportPrinting.h"

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <optional>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class AgendaOnPaper : public Agenda {
protected:
    void SetUp() override {
        Agenda::SetUp();
        givenCheques();
    }
    void TearDown() override {
        setPrinterFunctions({});
        Agenda::TearDown();
    }

    static Relatorio& relatorio() {
        return *JanelaDeImpressao::instance().findChild<Relatorio*>("Relatorio");
    }
    /// Every text of a page, a blank between two.
    static std::string pagina(int qual) {
        QStringList textos;
        for (const Relatorio::Text& texto : relatorio().textsOf(qual))
            if (!texto.text.isEmpty())
                textos += texto.text;
        return textos.join(' ').toStdString();
    }
    /// The slip's window is asked for by its button, with these cheques ticked.
    static FrmAgenda& marcados(std::initializer_list<int> linhas) {
        auto& form = open<FrmAgenda>();
        escolher(form, "cmbperiodo", "De");
        type(form, "txtinicio", daqui(-40).toString("ddMMyyyy"));
        type(form, "txtfim", daqui(6).toString("ddMMyyyy"));
        press(Qt::Key_Return);
        for (const int linha : linhas)
            clickCheckBox(form, "lstcheques", linha);
        return form;
    }
};

INSTANTIATE_TEST_SUITE_P(, AgendaOnPaper, everywhere(), keptName);

TEST_P(AgendaOnPaper, PrintsTheListAsItStands) {
    auto& form = open<FrmAgenda>();
    escolher(form, "txtbanco", "agro");
    clickColumn(form, "lstcheques", ListaDaAgenda::kValor);
    clickColumn(form, "lstcheques", ListaDaAgenda::kValor);
    clickCheckBox(form, "lstcheques", 1);
    click(form, "cmdimprimir");
    ASSERT_TRUE(JanelaDeImpressao::instance().isVisible());
    EXPECT_EQ(JanelaDeImpressao::instance().windowTitle(), "Cheques por vencimento");
    const std::string texto = pagina(1);
    const auto numeroDoPrimeiro = texto.find("000105 Carla Reis Agrobanco 0042 ");
    EXPECT_NE(numeroDoPrimeiro, std::string::npos);
    EXPECT_LT(numeroDoPrimeiro, texto.find("000104 Ana Costa"));
    EXPECT_THAT(texto, HasSubstr("Vencem de " + formatDate(daqui(0)).toStdString() + " a " +
                                 formatDate(daqui(6)).toStdString() + "; Agrobanco"));
    EXPECT_THAT(texto, HasSubstr("amanhã"));
    EXPECT_THAT(texto, HasSubstr("Cheques: 2"));
    EXPECT_THAT(texto, HasSubstr("Total: 1.000,99"));
    EXPECT_THAT(texto, HasSubstr("Marcados: 1 cheque, R$ 0,99"));
    activate(JanelaDeImpressao::instance());
    press(Qt::Key_Escape);
    EXPECT_FALSE(JanelaDeImpressao::instance().isVisible());
}

TEST_P(AgendaOnPaper, PrintsTheSumOfEachDayWhereDaysFollowOneAnother) {
    auto& form = open<FrmAgenda>(); // 000103 and 000104 today, 000105, 000106
    const auto impressa = [&] {
        click(form, "cmdimprimir");
        std::string texto = pagina(1);
        activate(JanelaDeImpressao::instance());
        press(Qt::Key_Escape);
        activate(form);
        return texto;
    };
    const std::string porDia = impressa();
    EXPECT_THAT(porDia,
                HasSubstr("Soma: 2 cheques " + formatDate(daqui(0)).toStdString() + " 100,99"));
    EXPECT_THAT(porDia, HasSubstr("Soma: 1 cheque "));
    EXPECT_THAT(porDia, HasSubstr("Cheques: 4"));
    clickColumn(form, "lstcheques", ListaDaAgenda::kCliente);
    EXPECT_THAT(impressa(), Not(HasSubstr("Soma: ")));
    clickColumn(form, "lstcheques", ListaDaAgenda::kVencimento);
    escolher(form, "cmbperiodo", "Hoje"); // its sum is that of all
    EXPECT_THAT(impressa(), Not(HasSubstr("Soma: ")));
}

TEST_P(AgendaOnPaper, PrintsNoEmptyList) {
    auto& form = open<FrmAgenda>();
    escolher(form, "cmbperiodo", "De");
    type(form, "txtinicio", "01011999");
    type(form, "txtfim", "02011999");
    press(Qt::Key_Return);
    expectMessage("Impressão", "Não há registros a imprimir.", MessageIcon::exclamation);
    click(form, "cmdimprimir");
    EXPECT_FALSE(JanelaDeImpressao::instance().isVisible());
}

TEST_P(AgendaOnPaper, SavesTheSumsPerDayAsACalendar) {
    const QTemporaryDir pasta;
    auto& form = open<FrmAgenda>();
    const FileRequest pedido{FileChoice::newFile, "Salvar o calendário", "Vencimentos.ics",
                             "Calendário (*.ics)"};
    expectFile(pedido, std::nullopt);
    click(form, "cmdcalendario");
    const QString caminho = pasta.filePath("dias.ics");
    expectFile(pedido, caminho);
    expectMessage("Salvar o calendário", "O calendário foi salvo em " + caminho + ".",
                  MessageIcon::information);
    click(form, "cmdcalendario");
    QFile arquivo(caminho);
    ASSERT_TRUE(arquivo.open(QIODevice::ReadOnly));
    const std::string texto = arquivo.readAll().toStdString();
    EXPECT_THAT(texto, HasSubstr("SUMMARY:Vencem 2 cheques\\, R$ 100\\,99\r\n"));
    EXPECT_THAT(texto, HasSubstr("SUMMARY:Vencem 1 cheque\\, R$ 2.000\\,00\r\n"));
    const QString semPasta = pasta.filePath("nada/dias.ics");
    expectFile(pedido, semPasta);
    expectMessage("Salvar o calendário",
                  "Não foi possível gravar \"" + semPasta +
                      "\": a pasta não aceita o arquivo ou o disco está cheio. Escolha outra "
                      "pasta.");
    click(form, "cmdcalendario");
}

TEST_P(AgendaOnPaper, MakesADepositSlipOfTheMarkedChequesThatAreDue) {
    auto& form = marcados({0, 2, 4}); // 000101, 000103 and one that isn't due
    const auto antes = rows("select * from cheques order by lancamento");
    expectMessage("Borderô",
                  "Dos cheques marcados, ficam fora do borderô:\n\nAinda não venceram, e "
                  "o banco não deve recebê-los antes: 1.");
    whileModal<FrmBordero>([](FrmBordero& bordero) {
        EXPECT_EQ(text(bordero, "lblsoma"), "2 cheques, R$ 110,00");
        FormTest::click(bordero, "cmdsair");
    });
    click(form, "cmdbordero");
    activate(form);
    clickCheckBox(form, "lstcheques", 4);
    whileModal<FrmBordero>([&](FrmBordero& bordero) {
        expectMessage("Advertência", "É necessário preencher o banco do depósito.");
        click(bordero, "cmdimprimir");
        EXPECT_EQ(focus(), "txtbanco");
        type(bordero, "txtbanco", "norte"); // none begins so: as it is typed
        type(bordero, "txtconta", "0042 / 123-4");
        click(bordero, "cmdimprimir");
    });
    click(form, "cmdbordero");
    ASSERT_TRUE(JanelaDeImpressao::instance().isVisible());
    const std::string texto = pagina(1);
    for (const char* parte :
         {"Borderô de depósito", "Depositado em: norte     Conta: 0042 / 123-4",
          "1 000101 Banco Norte 0042 Ana Costa", "2 000103 Banco Norte 0042 Ana Costa",
          "Cheques: 2", "Total: 110,00", "Local e data", "Assinatura"})
        EXPECT_THAT(texto, HasSubstr(parte));
    EXPECT_EQ(texto.find("000105"), std::string::npos);
    EXPECT_THAT(texto, testing::ContainsRegex("Nº [0-9]{6}-[0-9]{6} "));
    const auto historico = rows("select operacao,numero,valor from valtrino_historico");
    EXPECT_THAT(historico,
                ElementsAre(testing::MatchesRegex("borderô\\|[0-9]{6}-[0-9]{6}\\|110,00")));
    const std::string grupo = rows("select grupo from valtrino_historico").at(0);
    EXPECT_EQ(Desfazer::desfazer(std::stoi(grupo)),
              "Um borderô não altera nenhum cheque: não há o que desfazer.");
    EXPECT_THAT(texto, HasSubstr("Nº " + historico.at(0).substr(9, 13) + ' '));
    EXPECT_EQ(rows("select * from cheques order by lancamento"), antes);
}

TEST_P(AgendaOnPaper, ProposesTwoCopiesOfTheSlip) {
    int copias = 0;
    setPrinterFunctions({[] { return true; },
                         [&](QPrinter& printer, int, QWidget*) {
                             copias = printer.copyCount();
                             return false;
                         }});
    auto& form = marcados({0});
    whileModal<FrmBordero>([](FrmBordero& bordero) {
        type(bordero, "txtbanco", "banco");
        click(bordero, "cmdimprimir");
    });
    click(form, "cmdbordero");
    activate(JanelaDeImpressao::instance());
    press(Qt::Key_P, Qt::ControlModifier);
    EXPECT_EQ(copias, 2);
    JanelaDeImpressao::instance().close();
    activate(form);
    click(form, "cmdimprimir");
    activate(JanelaDeImpressao::instance());
    press(Qt::Key_P, Qt::ControlModifier);
    EXPECT_EQ(copias, 1);
}

TEST_P(AgendaOnPaper, LeavesOutOfTheSlipWhatAnotherStationHasSettled) {
    auto& form = marcados({0, 1});
    data().Automacao.flush();
    {
        ado::Connection outra;
        outra.Open(data().Automacao.ConnectionString());
        ado::Recordset cheques;
        cheques.Open("select * from cheques where numero='000101'", outra);
        cheques.Delete();
        cheques.Close();
        cheques.Open("select * from cheques where numero='000102'", outra);
        cheques["valor"] = jet::Currency{700'000};
        cheques.Update();
    }
    expectMessage("Borderô", "Dos cheques marcados, ficam fora do borderô:\n\nNão estão mais "
                             "cadastrados, por terem sido baixados ou excluídos: 1.");
    whileModal<FrmBordero>([](FrmBordero& bordero) {
        EXPECT_EQ(text(bordero, "lblsoma"), "1 cheque, R$ 70,00"); // as it is now
        press(Qt::Key_Escape);
    });
    click(form, "cmdbordero");
    EXPECT_THAT(numeros(form), ElementsAre("000102", "000103", "000104", "000105", "000106"));
}

TEST_P(AgendaOnPaper, MakesNoSlipOfNothing) {
    auto& form = marcados({});
    expectMessage("Borderô", "Marque na lista os cheques que vão ser depositados.");
    click(form, "cmdbordero");
    EXPECT_EQ(focus(), "lstcheques");
    clickCheckBox(form, "lstcheques", 5);
    expectMessage("Borderô",
                  "Dos cheques marcados, ficam fora do borderô:\n\nAinda não venceram, e "
                  "o banco não deve recebê-los antes: 1.");
    click(form, "cmdbordero");
}

} // namespace
