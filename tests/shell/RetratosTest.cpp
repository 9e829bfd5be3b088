// The windows as they are seen, light and dark: every text stands out clearly from its ground. With
// VALTRINO_PICTURES set to a folder the pictures are kept there; see scripts/pictures.sh.
#include "shell/EveryWindow.h"
#include "support/Colours.h"

#include <QAbstractButton>
#include <QDir>
#include <QLabel>
#include <QLineEdit>

#include <gmock/gmock.h>

#include <unordered_map>

namespace {

class Pictures : public EveryWindow, public testing::WithParamInterface<ColourScheme> {
protected:
    void SetUp() override {
        EveryWindow::SetUp();
        applyColours(GetParam());
    }
    void TearDown() override {
        EveryWindow::TearDown();
        applyColours(ColourScheme::light);
    }

    static QString textOf(const QWidget& widget) {
        if (const auto* label = qobject_cast<const QLabel*>(&widget))
            return label->text();
        if (const auto* button = qobject_cast<const QAbstractButton*>(&widget))
            return button->icon().isNull() ? button->text() : QString(); // else the icon stands out
        const auto* line = qobject_cast<const QLineEdit*>(&widget);
        return line ? line->text() : QString();
    }

    /// The clearest contrast to the ground, which is what there is most of.
    static double contrastIn(const QImage& picture) {
        std::unordered_map<QRgb, int> count;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                ++count[picture.pixel(x, y)];
        const auto ground =
            std::ranges::max_element(count, {}, [](const auto& each) { return each.second; });
        double most = 1;
        for (const auto& [colour, times] : count)
            most = std::max(most, contrast(QColor(colour), QColor(ground->first)));
        return most;
    }

    static QImage pictureOf(QWidget& window) { return window.grab().toImage(); }

    static void keep(const QImage& picture, const std::string& state) {
        const QString folder = qEnvironmentVariable("VALTRINO_PICTURES");
        if (folder.isEmpty())
            return;
        const char* const scheme = GetParam() == ColourScheme::dark ? "dark" : "light";
        const QString name = QString("%1-%2-%3.png")
                                 .arg(QString::fromStdString(state), scheme)
                                 .arg(qRound(picture.devicePixelRatio() * 100));
        EXPECT_TRUE(picture.save(QDir(folder).filePath(name))) << name.toStdString();
    }
};

INSTANTIATE_TEST_SUITE_P(, Pictures, testing::Values(ColourScheme::light, ColourScheme::dark),
                         [](const auto& chosen) {
                             return chosen.param == ColourScheme::dark ? "Dark" : "Light";
                         });

TEST_P(Pictures, ShowEveryTextClearlyOnItsGround) {
    constexpr double kLeast = 4.5;
    int texts = 0;
    for (const State& state : states()) {
        QWidget& window = state.show();
        const QImage picture = pictureOf(window);
        keep(picture, state.name);
        for (const QWidget* widget : window.findChildren<QWidget*>()) {
            if (!widget->isVisibleTo(&window) || !widget->isEnabled() ||
                textOf(*widget).trimmed().isEmpty())
                continue;
            const QRect seen =
                QRect(widget->mapTo(&window, QPoint()), widget->size()) & window.rect();
            if (seen.isEmpty() || widget->visibleRegion().isEmpty())
                continue;
            ++texts;
            const qreal scale = picture.devicePixelRatio();
            EXPECT_GE(contrastIn(picture.copy(QRect(seen.topLeft() * scale, seen.size() * scale))),
                      kLeast)
                << state.name << ": " << widget->objectName().toStdString();
        }
    }
    EXPECT_GT(texts, 150);
}

TEST_P(Pictures, FollowTheSchemeOfTheSystem) {
    for (const State& state : states()) {
        const QImage picture = pictureOf(state.show());
        const bool dark = luminance(picture.pixelColor(2, 2)) < 0.5;
        EXPECT_EQ(dark, GetParam() == ColourScheme::dark) << state.name;
    }
}

} // namespace
