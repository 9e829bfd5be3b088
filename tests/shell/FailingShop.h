#pragma once

#include "controls/window/Failure.h"
#include "jet/Error.h"
#include "reports/FrmApagar.h"
#include "shell/Mirtal.h"
#include "support/ChequeShop.h"
#include "support/FailingDisk.h"
#include "support/OtherStations.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

/// Over a shop with five cheques of January 2024 on a disk that can be made to fail; a server has
/// its own.
class FailingShop : public Everywhere<ChequeShop> {
protected:
    using Strings = std::vector<std::string>;

    void SetUp() override {
        ChequeShop::SetUp();
        data().fechar();
        data().Automacao.setDisk(disk_);
        data().abrir();
        given("cheques", {cheque(1), cheque(2), cheque(3), cheque(4), cheque(5)});
        data().Automacao.flush();
        setFailureHandler([this](const std::exception_ptr& failure) {
            try {
                std::rethrow_exception(failure);
            } catch (const jet::Error& error) {
                failed_.push_back(error.what());
            }
        });
    }
    void TearDown() override {
        disk_.refused.clear();
        Mirtal::aoMostrarMensagem({});
        ChequeShop::TearDown();
    }
    static Row cheque(int dayOfMonth) {
        // clang-format off
        return {
            {"cliente",   number(kAna)},
            {"banco",     number(kNorte)},
            {"numero",    words("000001")},
            {"bompara",   day(2024, 1, dayOfMonth)},
            {"valor",     money(10)},
            {"descontar", yes(true)}
        };
        // clang-format on
    }

    void fail(int error, int spared = 0) {
        disk_.error = error;
        disk_.spared = spared;
        disk_.refused = "journal";
    }
    /// The cheques that are on the disk, as another station reads them.
    [[nodiscard]] static Strings onDisk() {
        ado::Connection station;
        station.Open(data().Automacao.ConnectionString());
        ado::Recordset rs;
        rs.Open("select * from cheques order by lancamento", station);
        Strings numbers;
        for (; !rs.EOF(); rs.MoveNext())
            numbers.push_back(rs["lancamento"].text());
        return numbers;
    }
    /// Another station saves a bank; it would wait if the file were held.
    void anotherSaves() {
        EXPECT_FALSE(isHeldForWriting(shop().folder() / "automacao.mdb")) << "others have to wait";
        ado::Connection station;
        station.Open(data().Automacao.ConnectionString());
        ado::Recordset rs;
        rs.Open("bancos", station);
        rs.AddNew();
        rs["nome"] = "De outra estação";
        rs.Update();
        station.Close();
    }
    /// The history has its table, which is written at once: what is changed later may wait.
    static void beginHistory() { data().historico.comecar(); }
    static void deleteOutsideATransaction() {
        data().rsCheques.MoveFirst();
        data().rsCheques.Delete();
    }
    static void purge(FrmApagar& form) {
        type(form, "txtdtinicial", "01012024");
        press(Qt::Key_Return);
        type("31012024");
        press(Qt::Key_Return);
        press(Qt::Key_Return);
        press(Qt::Key_Return); // on the deletion
    }
    /// Runs the program's events until it is so.
    template <class Condition>
    static void until(Condition&& condition) {
        EXPECT_TRUE(QTest::qWaitFor(condition, 20'000));
    }

    FailingDisk disk_;
    Strings failed_;
};
