// Icons, colours, fonts, heading, foot and the hourglass.
#include "controls/look/BusyCursor.h"
#include "controls/look/Icons.h"
#include "controls/look/Style.h"
#include "controls/window/Foot.h"
#include "controls/window/HeadingStrip.h"
#include "support/Colours.h"
#include "support/QtPrinters.h"

#include <QApplication>
#include <QDir>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPalette>
#include <QPushButton>

#include <gtest/gtest.h>

#include <memory>

namespace {

/// The colour of a picture's most opaque spot.
QColor inkOf(const QIcon& icon, QIcon::Mode mode = QIcon::Normal) {
    const QImage image = icon.pixmap(QSize(32, 32), 2.0, mode).toImage();
    QColor ink = Qt::transparent;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (image.pixelColor(x, y).alpha() > ink.alpha())
                ink = image.pixelColor(x, y);
    return ink;
}

class Look : public testing::Test {
protected:
    ~Look() override { applyColours(ColourScheme::light); }
};

TEST_F(Look, KindsOfFilesAreNamedInPortuguese) {
    aplicarEstilo(*qApp);
    const QFileIconProvider files;
    EXPECT_EQ(files.type(QFileInfo(QDir::tempPath())), "Pasta");
    EXPECT_EQ(files.type(QFileInfo(QDir::rootPath())), "Unidade");
    EXPECT_EQ(files.type(QFileInfo(QDir::temp().filePath("não existe"))), "Desconhecido");
}

TEST_F(Look, TheMenuEntryUnderTheHandHasItsIconInTheColourOfItsText) {
    aplicarEstilo(*qApp);
    QMenu menu;
    QAction* entry = menu.addAction(Icons::named("save"), QString());
    menu.popup({});
    const auto spots = [&](QPalette::ColorRole role) {
        const QImage picture = menu.grab(menu.actionGeometry(entry)).toImage();
        int count = 0;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width() / 2; ++x)
                count += picture.pixelColor(x, y) == QGuiApplication::palette().color(role) ? 1 : 0;
        return count;
    };
    EXPECT_GT(spots(QPalette::WindowText), 0);
    menu.setActiveAction(entry);
    EXPECT_EQ(spots(QPalette::WindowText), 0);
    EXPECT_GT(spots(QPalette::HighlightedText), 0);
}

TEST_F(Look, QtsOwnTextsAreInPortuguese) {
    aplicarEstilo(*qApp);
    QLineEdit box("texto");
    const std::unique_ptr<QMenu> menu(box.createStandardContextMenu());
    QStringList entries;
    for (const QAction* action : menu->actions())
        entries << action->text().section('\t', 0, 0).remove('&');
    EXPECT_TRUE(entries.contains("Copiar") && entries.contains("Selecionar tudo"))
        << entries.join(", ").toStdString();
}

TEST_F(Look, AnIconTakesTheColourOfTheTextAndFollowsIt) {
    const QIcon icon = Icons::named("save");
    for (const ColourScheme scheme : {ColourScheme::light, ColourScheme::dark}) {
        applyColours(scheme);
        const QPalette palette = QGuiApplication::palette();
        EXPECT_EQ(inkOf(icon), palette.color(QPalette::Active, QPalette::WindowText));
        EXPECT_EQ(inkOf(icon, QIcon::Disabled),
                  palette.color(QPalette::Disabled, QPalette::WindowText));
        EXPECT_EQ(inkOf(icon, QIcon::Selected),
                  palette.color(QPalette::Active, QPalette::HighlightedText));
    }
}

TEST_F(Look, AnIconIsDrawnInThePointsOfTheScreen) {
    const QPixmap sharp = Icons::named("banco").pixmap(QSize(24, 24), 2.0);
    EXPECT_EQ(sharp.width(), 48);
    EXPECT_EQ(sharp.devicePixelRatio(), 2.0);
}

TEST_F(Look, ButtonsGetThePictureTheyName) {
    QWidget window;
    QPushButton save(&window);
    save.setProperty("iconName", "save");
    QPushButton plain(&window);
    Icons::applyTo(window);
    EXPECT_FALSE(save.icon().isNull());
    EXPECT_TRUE(plain.icon().isNull());
}

TEST_F(Look, TextCanBeReadInBothSchemes) {
    const std::pair<QPalette::ColorRole, QPalette::ColorRole> pairs[] = {
        {QPalette::WindowText,      QPalette::Window       },
        {QPalette::WindowText,      QPalette::AlternateBase},
        {QPalette::Text,            QPalette::Base         },
        {QPalette::Text,            QPalette::AlternateBase},
        {QPalette::ButtonText,      QPalette::Button       },
        {QPalette::HighlightedText, QPalette::Highlight    },
        {QPalette::ToolTipText,     QPalette::ToolTipBase  },
        {QPalette::PlaceholderText, QPalette::Base         },
        {QPalette::Link,            QPalette::Base         },
    };
    for (const ColourScheme scheme : {ColourScheme::light, ColourScheme::dark}) {
        applyColours(scheme);
        for (const auto& [text, ground] : pairs) {
            const QPalette palette = QGuiApplication::palette();
            EXPECT_GE(contrast(palette.color(text), palette.color(ground)), 4.5)
                << text << " on " << ground
                << (scheme == ColourScheme::dark ? ", dark" : ", light");
        }
    }
}

TEST_F(Look, TextIsNeverBelowTenPointsAndHeadingsAreLarger) {
    aplicarEstilo(*qApp);
    EXPECT_GE(QApplication::font().pointSizeF(), 10);
    EXPECT_GT(headingFont().pointSizeF(), QApplication::font().pointSizeF());
    EXPECT_EQ(QLocale().language(), QLocale::Portuguese);
}

TEST_F(Look, TheHourglassShowsWhileABusyCursorLives) {
    {
        const BusyCursor busy;
        ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
        EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
    }
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

TEST_F(Look, AHeadingShowsItsTextAsItStands) {
    HeadingStrip strip;
    strip.setProperty("text", "Bancos & <agências>");
    strip.setProperty("iconName", "banco");
    EXPECT_EQ(strip.text(), "Bancos & <agências>");
    EXPECT_EQ(strip.accessibleName(), "Bancos & <agências>");
    strip.show();
    bool pictured = false;
    for (const auto* label : strip.findChildren<QLabel*>())
        pictured |= !label->pixmap().isNull();
    EXPECT_TRUE(pictured);
}

TEST_F(Look, AHeadingSaysWhichRecordIsOnShowAsFarAsThereIsRoom) {
    HeadingStrip strip;
    strip.setText("Informações cadastrais de clientes ");
    strip.resize(800, 40);
    strip.show();
    auto* shown = strip.findChild<QLabel*>("lblRegistro");
    EXPECT_EQ(shown->text(), "");
    const QString record = "Código 12: " + QString("Ana Maria ").repeated(40);
    strip.setRecord("Novo");
    EXPECT_EQ(shown->text(), "Novo");
    EXPECT_EQ(shown->toolTip(), "");
    strip.setRecord(record);
    EXPECT_EQ(strip.width(), 800);
    EXPECT_TRUE(shown->text().endsWith("…")) << shown->text().toStdString();
    EXPECT_EQ(shown->toolTip(), record);
    const auto before = shown->text().size();
    strip.resize(1200, 40);
    EXPECT_GT(shown->text().size(), before);
}

TEST_F(Look, AFootMakesItsButtonsEquallyLarge) {
    Foot foot;
    auto* row = new QHBoxLayout(&foot);
    auto* small = new QPushButton("&Ok");
    auto* large = new QPushButton("&Localizar um cheque");
    row->addWidget(small);
    row->addWidget(large);
    foot.show();
    row->activate();
    EXPECT_EQ(small->size(), large->size());
}

} // namespace
