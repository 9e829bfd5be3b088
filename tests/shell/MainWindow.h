#pragma once

#include "shell/MDICheques.h"
#include "support/ShopTest.h"

#include <QAction>
#include <QSettings>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <stdexcept>
#include <string>

/// Tests of the main window, whose place is remembered for the test alone.
class MainWindow : public Everywhere<ShopTest> {
protected:
    void SetUp() override {
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings_.path());
        ShopTest::SetUp();
        MDICheques::mostrarMensagens();
    }
    static MDICheques& openMain() {
        MDICheques& window = MDICheques::instance();
        window.show();
        activate(window);
        return window;
    }
    static QAction& action(const char* name) {
        auto* found = MDICheques::instance().findChild<QAction*>(name);
        if (!found)
            throw std::runtime_error(std::string("no action ") + name);
        return *found;
    }
    /// The value of a commit pair that no station has.
    void noteInFile(std::uint16_t value) const {
        std::fstream file(shop().file(), std::ios::binary | std::ios::in | std::ios::out);
        file.seekp((GetParam() == jet::Version::jet3 ? 0x600 : 0xE00) + 2 * 200);
        file.put(static_cast<char>(value & 0xFF)).put(static_cast<char>(value >> 8));
    }
    static void expectDataClosed() {
        for (const ado::Recordset* rs :
             {&data().rsCheques, &data().rsCliente, &data().rsBancos, &data().rsSemFundos})
            EXPECT_EQ(rs->State(), ado::State::Closed);
        EXPECT_EQ(data().Automacao.State(), ado::State::Closed);
    }

    QTemporaryDir settings_;
};
