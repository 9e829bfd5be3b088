#pragma once

#include "agenda/FrmHistorico.h"
#include "collections/FrmLocCHTerceiros.h"
#include "controls/box/ListView.h"
#include "shell/Historico.h"
#include "shell/Mirtal.h"
#include "support/ChequeShop.h"

#include <gmock/gmock.h>

/// A shop with four cheques, two of them Ana's, that are settled, purged and changed.
class History : public Everywhere<ChequeShop> {
protected:
    using Strings = std::vector<std::string>;

    void SetUp() override {
        ChequeShop::SetUp();
        given("cheques", {cheque(kAna, "101", 10), cheque(kBento, "102", 20),
                          cheque(kAna, "103", 30), cheque(kCarla, "104", 40)});
    }

    static Row cheque(int client, const char* numero, std::int64_t reais) {
        // clang-format off
        return {
            {"cliente",    number(client)},
            {"banco",      number(kNorte)},
            {"numero",     words(numero)},
            {"data",       day(2026, 1, 5)},
            {"bompara",    day(2026, 2, 5)},
            {"valor",      money(reais, 50)},
            {"observacao", words("diz \"não\" [valor]=1")},
            {"descontar",  yes(true)}
        };
        // clang-format on
    }
    /// All that stands in the cheques.
    static Strings cheques() { return rows("select * from cheques order by lancamento"); }
    static Strings numbers() { return rows("select lancamento from cheques order by lancamento"); }
    static Strings recorded(const char* fields) {
        return rows(QString("select %1 from valtrino_historico order by id").arg(fields));
    }

    /// Settles the cheques of these rows of the list.
    static void settle(std::initializer_list<int> ticked) {
        Mirtal::modo = "Baixar";
        auto& form = FormTest::open<FrmLocCHTerceiros>();
        click(form, "chkdescontar");
        for (const int row : ticked)
            clickCheckBox(form, "lstterceiros", row);
        click(form, "cmdsalvar");
        form.unload();
    }
    static void purgeAll() {
        Mirtal::excluirMuitos("excluído", Historico::kExpurgo, [] {
            ado::Recordset all;
            all.Open("select * from cheques", data().Automacao);
            for (; !all.EOF(); all.MoveNext())
                all.Delete();
        });
    }
    /// Changes a cheque as another window does, under that name.
    static void change(const char* operation, int lancamento, const char* field,
                       const char* value) {
        const Historico::Operacao named(data().historico, operation);
        ado::Recordset rs;
        rs.Open("select * from cheques where lancamento=" + std::to_string(lancamento),
                data().Automacao);
        rs[field] = value;
        rs.Update();
    }

    /// A column of the list on show.
    static Strings listed(const QWidget& form, int column) {
        const auto& list = control<ListView>(form, "lsthistorico");
        Strings all;
        for (int row = 0; row < list.count(); ++row)
            all.push_back(list.text(row, column).toStdString());
        return all;
    }
    static void choose(QWidget& form, const char* box, const char* entry) {
        type(form, box, entry);
        press(Qt::Key_Return);
    }
    /// Undoes the operation of a row, whose question must be this one.
    void undo(FrmHistorico& form, int row, const char* question,
              MessageAnswer answer = MessageAnswer::yes) {
        clickRow(form, "lsthistorico", row);
        expectMessage("Desfazer", question, MessageIcon::question, MessageButtons::yesNo, answer);
        click(form, "cmddesfazer");
    }
};
