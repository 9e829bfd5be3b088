// Which control has the focus is told at a glance: pictures of every kind of control with it and
// without it, in light and in dark colours.
#include "controls/box/ActiveText.h"
#include "controls/box/DatePicker.h"
#include "controls/box/DropDownList.h"
#include "controls/box/ListView.h"
#include "controls/box/MemoEdit.h"
#include "controls/box/MoneyEdit.h"
#include "controls/folder/DriveList.h"
#include "controls/folder/FileList.h"
#include "controls/folder/FolderTree.h"
#include "controls/look/Style.h"
#include "controls/window/NavigationBar.h"
#include "support/Colours.h"
#include "support/FormTest.h"

#include <QCheckBox>
#include <QPushButton>
#include <QTabBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <functional>
#include <memory>

namespace {

constexpr double kTold = 3.0; ///< contrast of what tells a control from its ground

ListView* filledList() {
    auto* list = new ListView;
    list->setColumns({
        {"Código", 1},
        {"Nome",    3}
    });
    for (const char* code : {"001", "104", "237"})
        list->addItem(
            {.key = code, .text = code, .subItems = {"Banco"}, .icon = {}, .checked = false});
    return list;
}

struct Kind {
    const char* name;
    std::function<QWidget*()> made;
};

const Kind kKinds[] = {
    {"text box",          [] { return new QLineEdit; }                 },
    {"masked box",        [] { return new ActiveText; }                },
    {"money box",         [] { return new MoneyEdit; }                 },
    {"date box",          [] { return new DatePicker; }                },
    {"memo",              [] { return new MemoEdit; }                  },
    {"drop-down list",    [] { return new DropDownList; }              },
    {"drive list",        [] { return new DriveList; }                 },
    {"check box",         [] { return new QCheckBox("&Descontar"); }   },
    {"button",            [] { return new QPushButton("&Salvar"); }    },
    {"navigation button", [] { return (new NavigationBar)->button(1); }},
    {"tab",
     [] {
         auto* tabs = new QTabBar;
         tabs->addTab("&Cadastro");
         tabs->addTab("Pais");
         return tabs;
     }                                                                 },
    {"list",              [] { return filledList(); }                  },
    {"folder tree",       [] { return new FolderTree; }                },
    {"file list",         [] { return new FileList; }                  },
};

class Focus : public FormTest {
protected:
    Focus() { aplicarEstilo(*qApp); }
    ~Focus() override { applyColours(ColourScheme::light); }

    /// How many points of the control's picture tell clearly that it has the focus.
    static int telling(QWidget& control, QWidget& other) {
        other.setFocus();
        const QImage without = control.grab().toImage();
        control.setFocus(Qt::TabFocusReason);
        const QImage with = control.grab().toImage();
        int points = 0;
        for (int y = 0; y < with.height(); ++y)
            for (int x = 0; x < with.width(); ++x)
                points += contrast(with.pixelColor(x, y), without.pixelColor(x, y)) >= kTold;
        return points;
    }
};

TEST_F(Focus, IsToldAtAGlanceOnEveryKindOfControlInBothSchemes) {
    for (const ColourScheme scheme : {ColourScheme::light, ColourScheme::dark}) {
        applyColours(scheme);
        for (const Kind& kind : kKinds) {
            QWidget window;
            auto* column = new QVBoxLayout(&window);
            auto* other = new QPushButton("Outro");
            QWidget* control = kind.made();
            QWidget* whole = control->parentWidget() ? control->parentWidget() : control;
            column->addWidget(whole);
            column->addWidget(other);
            window.show();
            activate(window);
            // At least as many as a line of one point around a quarter of the control.
            const int wanted = (control->width() + control->height()) / 2;
            EXPECT_GE(telling(*control, *other), wanted)
                << kind.name << (scheme == ColourScheme::dark ? ", dark" : ", light");
            EXPECT_TRUE(control->hasFocus()) << kind.name;
        }
    }
}

} // namespace
