#pragma once

#include "agenda/FrmAgenda.h"
#include "controls/box/ListView.h"
#include "support/ChequeShop.h"

#include <string>
#include <vector>

/// The agenda over a shop's cheques, in both versions of the file. Due dates are told by the days
/// from today.
class Agenda : public Everywhere<ChequeShop> {
protected:
    static QDate daqui(int dias) { return QDate::currentDate().addDays(dias); }
    static jet::Value noDia(const QDate& dia) {
        return dia.isValid() ? day(dia.year(), dia.month(), dia.day()) : jet::Value();
    }
    /// In the bank, by default, and issued ten days ago.
    static Row cheque(int client, int bank, const char* numero, const QDate& vencimento,
                      const jet::Value& valor, bool descontar = true) {
        return {
            {"cliente",   number(client)   },
            {"banco",     number(bank)     },
            {"agencia",   words("0042")    },
            {"numero",    words(numero)    },
            {"data",      noDia(daqui(-10))},
            {"bompara",   noDia(vencimento)},
            {"valor",     valor            },
            {"descontar", yes(descontar)   },
        };
    }
    /// Late, due today, tomorrow, in six, seven, 29 and 30 days; and one that has no due date.
    void givenCheques() {
        given("cheques", {
                             cheque(kAna, kNorte, "000101", daqui(-40), money(10)),
                             cheque(kBento, kNorte, "000102", daqui(-1), money(20, 5), false),
                             cheque(kAna, kNorte, "000103", daqui(0), money(100)),
                             cheque(kAna, kAgro, "000104", daqui(0), money(0, 99), false),
                             cheque(kCarla, kAgro, "000105", daqui(1), money(1000)),
                             cheque(kBento, kNorte, "000106", daqui(6), money(2000)),
                             cheque(kBento, kAgro, "000107", daqui(7), money(4000)),
                             cheque(kCarla, kNorte, "000108", daqui(29), money(8000)),
                             cheque(kCarla, kNorte, "000109", daqui(30), money(16000)),
                             cheque(kCarla, kNorte, "000110", {}, money(32000)),
                         });
    }

    /// A column of a list, a text for each row.
    static std::vector<std::string> coluna(const QWidget& form, const char* lista, int qual) {
        const auto& list = control<ListView>(form, lista);
        std::vector<std::string> todas;
        todas.reserve(static_cast<std::size_t>(list.count()));
        for (int linha = 0; linha < list.count(); ++linha)
            todas.push_back(list.text(linha, qual).toStdString());
        return todas;
    }
    static std::vector<std::string> numeros(const QWidget& form) {
        return coluna(form, "lstcheques", ListaDaAgenda::kNumero);
    }
    static std::string linha(const QWidget& form, const char* lista, int qual) {
        const auto& list = control<ListView>(form, lista);
        QStringList textos{list.text(qual, 0)};
        textos += list.item(qual).subItems;
        return textos.join('|').toStdString();
    }
    /// Chooses an entry by typing its beginning.
    static void escolher(QWidget& form, const char* lista, const char* texto) {
        type(form, lista, texto);
        press(Qt::Key_Return);
    }
};
