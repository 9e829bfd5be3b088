// What holds for every window of the program: it can be told aloud, and its texts are whole.
#include "cheques/FrmConsultaCH.h"
#include "cheques/FrmLancarCheques.h"
#include "collections/FrmLancasSFundos.h"
#include "collections/FrmLocCHTerceiros.h"
#include "collections/FrmRenegociar.h"
#include "registers/frmBancos.h"
#include "registers/frmCliFor.h"
#include "reports/FrmApagar.h"
#include "reports/FrmFiltroRelat.h"
#include "reports/frmRel_ChequesSF.h"
#include "reports/frm_Msg.h"
#include "shell/MDICheques.h"
#include "shell/frmAbout.h"
#include "shell/frmcaminho.h"
#include "shell/frmlocalizar.h"
#include "support/ShopTest.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QSettings>
#include <QTemporaryDir>
#include <QToolBar>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace {

using testing::IsEmpty;

class EveryWindow : public ShopTest {
protected:
    void SetUp() override {
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings_.path());
        font_ = QApplication::font();
        ShopTest::SetUp();
    }
    void TearDown() override {
        ShopTest::TearDown();
        QApplication::setFont(font_);
    }

    static std::vector<QWidget*> windows() {
        return {&MDICheques::instance(),       &frmBancos::instance(),
                &frmCliFor::instance(),        &frmlocalizar::instance(),
                &FrmLancarCheques::instance(), &FrmLocCHTerceiros::instance(),
                &FrmLancasSFundos::instance(), &FrmConsultaCH::instance(),
                &FrmRenegociar::instance(),    &FrmApagar::instance(),
                &frmcaminho::instance(),       &FrmFiltroRelat::instance(),
                &frm_Msg::instance(),          &frmRel_ChequesSF::instance(),
                &frmAbout::instance()};
    }

    /// Whether the widget is a part of another control, which speaks for it.
    static bool isPart(const QWidget& widget) {
        const QWidget* parent = widget.parentWidget();
        return qobject_cast<const QComboBox*>(parent) || qobject_cast<const QLineEdit*>(parent);
    }

    static std::string nameOf(const QWidget& widget) {
        return (widget.window()->objectName() + "." + widget.objectName() + " (" +
                widget.metaObject()->className() + ")")
            .toStdString();
    }

    QTemporaryDir settings_;
    QFont font_;
};

TEST_F(EveryWindow, HasANameForEachControlThatTakesTheFocusOrClicks) {
    std::vector<std::string> unnamed;
    for (QWidget* window : windows()) {
        window->show();
        for (QWidget* widget : window->findChildren<QWidget*>()) {
            const bool used = widget->focusPolicy() != Qt::NoFocus ||
                              qobject_cast<QAbstractButton*>(widget) != nullptr;
            if (!used || !widget->isVisible() || widget->objectName().startsWith("qt_") ||
                isPart(*widget))
                continue;
            QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(widget);
            if (!spoken || spoken->text(QAccessible::Name).trimmed().isEmpty())
                unnamed.push_back(nameOf(*widget));
        }
    }
    EXPECT_THAT(unnamed, IsEmpty());
}

TEST_F(EveryWindow, HasAccessKeysThatDoNotCollide) {
    for (QWidget* window : windows()) {
        window->show();
        std::map<QString, std::string> owners;
        for (QWidget* widget : window->findChildren<QWidget*>()) {
            if (!widget->isVisibleTo(window))
                continue; // on another page: its key does nothing
            QString text;
            if (const auto* button = qobject_cast<QAbstractButton*>(widget))
                text = button->text();
            else if (const auto* label = qobject_cast<QLabel*>(widget); label && label->buddy())
                text = label->text();
            const QKeySequence key = QKeySequence::mnemonic(text);
            if (key.isEmpty())
                continue;
            const auto [other, fresh] = owners.emplace(key.toString(), nameOf(*widget));
            EXPECT_TRUE(fresh) << key.toString().toStdString() << ": " << other->second << " and "
                               << nameOf(*widget);
        }
    }
}

TEST_F(EveryWindow, ShowsItsTextsWholeAtOneOneAndAHalfAndTwiceTheSize) {
    std::vector<std::string> cut;
    for (const double scale : {1.0, 1.5, 2.0}) {
        QFont larger = font_;
        larger.setPointSizeF(font_.pointSizeF() * scale);
        QApplication::setFont(larger);
        for (QWidget* window : windows()) {
            window->show();
            QApplication::processEvents();
            for (QWidget* widget : window->findChildren<QWidget*>()) {
                const bool text = qobject_cast<QLabel*>(widget) != nullptr ||
                                  qobject_cast<QAbstractButton*>(widget) != nullptr;
                if (!text || !widget->isVisible() || isPart(*widget) ||
                    widget->objectName() == "pnlMensagem")
                    continue;
                const QSize needed = widget->minimumSizeHint().expandedTo(QSize(0, 0));
                if (widget->width() < needed.width() || widget->height() < needed.height())
                    cut.push_back(nameOf(*widget) + " at " + std::to_string(scale));
            }
        }
        WindowList::instance().clear();
    }
    EXPECT_THAT(cut, IsEmpty());
}

} // namespace
