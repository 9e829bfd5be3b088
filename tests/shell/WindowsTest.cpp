// What holds for every window of the program: it can be told aloud, and its texts are whole.
#include "controls/box/ActiveText.h"
#include "controls/box/DatePicker.h"
#include "controls/box/MoneyEdit.h"
#include "controls/window/HeadingStrip.h"
#include "shell/EveryWindow.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTabWidget>

#include <gmock/gmock.h>

#include <map>

namespace {

using testing::IsEmpty;

class WholeWindows : public EveryWindow {
protected:
    /// Does the work in every window that is a form, on show and whole: a new window isn't wider
    /// than two thirds of the screen, which is small here.
    static void inEachForm(const std::function<void(Form&)>& work) {
        for (const State& state : states())
            if (auto* form = qobject_cast<Form*>(&state.show())) {
                form->resize(form->size().expandedTo(form->sizeHint()));
                QApplication::processEvents();
                work(*form);
            }
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
};

TEST_F(WholeWindows, HasANameForEachControlThatTakesTheFocusOrClicks) {
    std::vector<std::string> unnamed;
    for (const State& state : states()) {
        for (QWidget* widget : state.show().findChildren<QWidget*>()) {
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

/// Short ones by kind, or because what goes in is short.
bool isShortField(const QWidget& widget) {
    static const QStringList kShort = {"txtagencia", "txtnumero", "txtCodigo",  "txtCódigo",
                                       "txtCGCCPF",  "txtCpf",    "txtcheques", "txttotal",
                                       "cmbEstado",  "cboVender", "cmbordem",   "txtInscriçãoRG"};
    return qobject_cast<const DatePicker*>(&widget) || qobject_cast<const MoneyEdit*>(&widget) ||
           qobject_cast<const ActiveText*>(&widget) || kShort.contains(widget.objectName());
}

bool isNameField(const QWidget& widget) {
    static const QStringList kNames = {
        "txtNome",       "txtnome",    "txtcliente",  "txtbanco",    "txtautorizou",
        "txtobservacao", "txtEmpresa", "txtEndereço", "txtBairro",   "txtCidade",
        "txtEMailCli",   "txtPai",     "txtcaminho",  "txtpesquisar"};
    return kNames.contains(widget.objectName());
}

TEST_F(WholeWindows, MadeLargerGivesItsRoomToNamesAndNoneToShortFields) {
    inEachForm([](Form& form) {
        std::map<QWidget*, int> before;
        for (QWidget* field : form.findChildren<QWidget*>())
            if (field->isVisible() && (isShortField(*field) || isNameField(*field)))
                before[field] = field->width();
        form.resize(1366, 740);
        QApplication::processEvents();
        for (const auto& [field, width] : before) {
            if (isShortField(*field))
                EXPECT_EQ(field->width(), width) << nameOf(*field);
            else
                EXPECT_GT(field->width(), width) << nameOf(*field);
        }
    });
}

// Of what begins at one line and is short, and of what reaches to the right edge.
TEST_F(WholeWindows, HasItsFieldsEndAtOneLine) {
    inEachForm([](Form& form) {
        std::map<int, std::pair<int, std::string>> ends;
        for (QWidget* field : form.findChildren<QWidget*>()) {
            if (!field->isVisible() || !isShortField(*field) || field->objectName() == "cmbordem")
                continue;
            const int left = field->mapTo(&form, QPoint()).x();
            const auto [first, fresh] =
                ends.emplace(left, std::pair(left + field->width(), nameOf(*field)));
            EXPECT_EQ(first->second.first, left + field->width())
                << first->second.second << " and " << nameOf(*field);
        }
    });
}

TEST_F(WholeWindows, HasNoFieldTooNarrowForWhatItHoldsHoweverSmallItIs) {
    inEachForm([](Form& form) {
        form.resize(form.minimumSizeHint());
        QApplication::processEvents();
        for (const QWidget* field : form.findChildren<QWidget*>()) {
            const bool holds = qobject_cast<const QLineEdit*>(field) != nullptr ||
                               qobject_cast<const QComboBox*>(field) != nullptr;
            if (holds && field->isVisible() && !isPart(*field)) {
                EXPECT_GE(field->width(), field->sizeHint().width()) << nameOf(*field);
            }
        }
    });
}

TEST_F(WholeWindows, WithoutAListKeepsItsFieldsTogetherAtTheTop) {
    auto& form = open<FrmFiltroRelat>();
    form.resize(1366, 740);
    QApplication::processEvents();
    const auto top = [&](const char* name) {
        return control(form, name).mapTo(&form, QPoint()).y();
    };
    EXPECT_LE(top("txtbanco") - top("txtcliente"), 2 * control(form, "txtcliente").height());
    EXPECT_LE(top("cmbordem") - top("txtcliente"), 6 * control(form, "txtcliente").height());
}

class EveryWindowOfRecords : public Everywhere<EveryWindow> {
protected:
    /// What each heading strip of the window says of the record, one text if they agree.
    static QString record(const Form& form) {
        QStringList said;
        for (const auto* strip : form.findChildren<HeadingStrip*>())
            said += strip->record();
        said.removeDuplicates();
        return said.join(" / ");
    }
};

INSTANTIATE_TEST_SUITE_P(, EveryWindowOfRecords, everywhere(), keptName);

TEST_P(EveryWindowOfRecords, SaysInItsHeadingWhetherItIsNewOrStored) {
    const struct {
        Form* form;
        const char* command;
        QString stored;
    } windows[] = {
        {&frmBancos::instance(),        "cmdNovo", "Cadastrado"           },
        {&frmCliFor::instance(),        "cmdNovo", "Código 1: Bento Dias"},
        {&FrmLancarCheques::instance(), "CmdNovo", "Lançamento 1"        },
        {&FrmLancasSFundos::instance(), "CmdNovo", "Lançamento 1"        },
    };
    for (const auto& [form, command, stored] : windows) {
        form->show();
        activate(*form);
        click(*form, "btnNavegacao", 0);
        EXPECT_EQ(record(*form), stored);
        click(*form, command);
        EXPECT_EQ(record(*form), "Novo") << form->objectName().toStdString();
        click(*form, "btnNavegacao", 0);
        EXPECT_EQ(record(*form), stored);
        form->unload();
    }
}

TEST_P(EveryWindowOfRecords, TheClientsOtherTabsShowWhoseTheyAre) {
    auto& form = open<frmCliFor>();
    auto& tabs = control<QTabWidget>(form, "tabCliFor");
    for (int tab = 0; tab < tabs.count(); ++tab) {
        tabs.setCurrentIndex(tab);
        QStringList shown;
        for (const auto* strip : form.findChildren<HeadingStrip*>())
            if (strip->isVisible())
                shown += strip->findChild<QLabel*>("lblRegistro")->text();
        EXPECT_EQ(shown, QStringList("Código 1: Bento Dias")) << tab;
    }
    click(form, "cmdNovo");
    type("Bento");
    EXPECT_EQ(record(form), "Novo: Bento");
}

TEST_P(EveryWindowOfRecords, TheClientsCodeLooksAsWhatIsOnlyShownElsewhere) {
    auto& client = open<frmCliFor>();
    const auto& code = control<QLineEdit>(client, "txtCódigo");
    const auto& shown = control<QLineEdit>(open<FrmConsultaCH>(), "txtCpf");
    EXPECT_TRUE(code.isReadOnly());
    EXPECT_EQ(code.palette().brush(QPalette::Base), shown.palette().brush(QPalette::Base));
    EXPECT_NE(code.palette().brush(QPalette::Base),
              control(client, "txtNome").palette().brush(QPalette::Base));
}

TEST_F(WholeWindows, ShowsItsTextsWholeAtOneOneAndAHalfAndTwiceTheSize) {
    struct FontKept {
        const QFont font = QApplication::font();
        ~FontKept() { QApplication::setFont(font); }
    } const kept;
    std::vector<std::string> cut;
    for (const double scale : {1.0, 1.5, 2.0}) {
        QFont larger = kept.font;
        larger.setPointSizeF(kept.font.pointSizeF() * scale);
        QApplication::setFont(larger);
        for (const State& state : states()) {
            for (QWidget* widget : state.show().findChildren<QWidget*>()) {
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
    }
    EXPECT_THAT(cut, IsEmpty());
}

} // namespace
