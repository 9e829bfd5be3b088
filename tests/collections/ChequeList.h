#pragma once

#include "collections/FrmLocCHTerceiros.h"
#include "shell/Mirtal.h"
#include "support/ShopTest.h"

#include <QCheckBox>

#include <string>
#include <vector>

/// The cheque list over a shop with a few cheques.
class ChequeList : public Everywhere<ShopTest> {
protected:
    void SetUp() override {
        ShopTest::SetUp();
        given("bancos", {bank(104, "Caixa da Serra"), bank(237, "Agrobanco")});
        given("cliente_fornecedor",
              {client("Maria", true), client("Ana", true), client("Zeca Fornecedor", false)});
    }
    static Row bank(int code, const char* name) {
        return {
            {"cod_banco", number(code)},
            {"nome",      words(name) }
        };
    }
    static Row client(const char* name, bool isClient) {
        return {
            {"nome", words(name)  },
            {"tipo", yes(isClient)}
        };
    }
    /// What received and bounced cheques have in common; of client 1 Maria and 2 Ana, bank 1 Caixa
    /// da Serra and 2 Agrobanco.
    static Row cheque(int client, int bank, const char* agency, const char* numero,
                      std::int64_t tenThousandths) {
        return {
            {"cliente", number(client)                           },
            {"banco",   number(bank)                             },
            {"agencia", agency ? words(agency) : jet::Value()    },
            {"numero",  words(numero)                            },
            {"valor",   jet::Value(jet::Currency{tenThousandths})}
        };
    }
    static Row received(Row cheque, const jet::Value& due, bool deposit) {
        cheque.push_back({"bompara", due});
        cheque.push_back({"descontar", yes(deposit)});
        return cheque;
    }
    static Row bounced(Row cheque, const jet::Value& issued) {
        cheque.push_back({"data", issued});
        return cheque;
    }
    /// Entry numbers 1 to 4; by name and due date 2, 4, 3, 1.
    void givenCheques() {
        given("cheques",
              {received(cheque(1, 1, "0001", "000101", 12'345'600), day(2024, 2, 1), true),
               received(cheque(2, 2, nullptr, "000102", 1'505'000), {}, false),
               received(cheque(1, 2, "0002", "000103", 1'000'000), day(2024, 1, 15), true),
               received(cheque(2, 1, "0001", "000104", 9'990'000), day(2024, 3, 1), true)});
    }
    void givenBounced() {
        given("semfundos", {bounced(cheque(1, 1, "0001", "900", 100'000), day(2023, 12, 1)),
                            bounced(cheque(2, 2, nullptr, "901", 200'000), day(2023, 12, 5))});
    }
    static FrmLocCHTerceiros& openFor(const char* mode) {
        Mirtal::modo = mode;
        return open<FrmLocCHTerceiros>();
    }

    static ListView& list(const QWidget& form) { return control<ListView>(form, "lstterceiros"); }
    static std::vector<std::string> listed(const QWidget& form) {
        std::vector<std::string> lines;
        for (int row = 0; row < list(form).count(); ++row) {
            QStringList cells;
            for (int column = 0; column < 6; ++column)
                cells << list(form).text(row, column);
            lines.push_back(cells.join('|').toStdString());
        }
        return lines;
    }
    /// The entry numbers on show, in their order.
    static std::string numbers(const QWidget& form) {
        QStringList all;
        for (int row = 0; row < list(form).count(); ++row)
            all << list(form).text(row, 0);
        return all.join(' ').toStdString();
    }
    static std::vector<std::string> stored() {
        return rows("select lancamento from cheques order by lancamento");
    }
    static void dates(QWidget& form, const char* first, const char* last) {
        auto& show = control<QCheckBox>(form, "chkmostrar");
        if (!show.isChecked())
            click(form, "chkmostrar");
        type(form, "txtinicio", first);
        type(form, "txtfim", last);
        press(Qt::Key_Return);
    }
};
