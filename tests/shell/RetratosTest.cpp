// The windows as they are seen, light and dark: every text stands out clearly from its ground. With
// VALTRINO_PICTURES set to a folder the pictures are kept there; see scripts/pictures.sh. With
// VALTRINO_KEPT_PICTURES set to such a folder they are compared with those in it.
#include "controls/look/Icons.h"
#include "shell/EveryWindow.h"
#include "support/Colours.h"

#include <QAbstractButton>
#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>

#include <gmock/gmock.h>

#include <cstdlib>
#include <set>
#include <string>
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
        if (const auto* tool = qobject_cast<const QToolButton*>(&widget))
            return tool->toolButtonStyle() == Qt::ToolButtonIconOnly ? QString() : tool->text();
        if (const auto* button = qobject_cast<const QAbstractButton*>(&widget))
            return button->text();
        const auto* line = qobject_cast<const QLineEdit*>(&widget);
        return line ? line->text() : QString();
    }

    /// Where a button's words stand, its icon and its edges left out: they stand out by themselves.
    static QRect wordsOf(const QAbstractButton& button) {
        constexpr int kEdge = 4;
        const QSize words = button.fontMetrics().size(Qt::TextShowMnemonic, button.text());
        QRect inside = button.rect().adjusted(kEdge, kEdge, -kEdge, -kEdge);
        const auto* tool = qobject_cast<const QToolButton*>(&button);
        if (tool && tool->toolButtonStyle() == Qt::ToolButtonTextUnderIcon)
            inside.setTop(inside.bottom() - words.height());
        else if (tool)
            inside.setLeft(inside.left() + tool->iconSize().width());
        else if (const auto* push = qobject_cast<const QPushButton*>(&button))
            inside.setLeft(inside.right() + 1 -
                           (inside.width() + words.width() - push->iconSize().width()) / 2);
        return inside;
    }

    static QRect measured(const QWidget& widget) {
        const auto* button = qobject_cast<const QAbstractButton*>(&widget);
        return button && !button->icon().isNull() ? wordsOf(*button) : widget.rect();
    }

    static double contrastOf(const QWidget& widget, const QWidget& window, const QImage& picture) {
        const QRect seen =
            measured(widget).translated(widget.mapTo(&window, QPoint())) & window.rect();
        const qreal scale = picture.devicePixelRatio();
        return contrastIn(
            picture.copy(QRectF(seen.topLeft() * scale, seen.size() * scale).toRect()));
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

/// Of a picture's points, how many differ clearly from another's of the same size.
double difference(const QImage& one, const QImage& other) {
    constexpr int kClearly = 51;
    const auto apart = [](int a, int b) { return std::abs(a - b) > kClearly; };
    qint64 points = 0;
    for (int y = 0; y < one.height(); ++y)
        for (int x = 0; x < one.width(); ++x) {
            const QRgb a = one.pixel(x, y);
            const QRgb b = other.pixel(x, y);
            points +=
                apart(qRed(a), qRed(b)) || apart(qGreen(a), qGreen(b)) || apart(qBlue(a), qBlue(b))
                    ? 1
                    : 0;
        }
    return static_cast<double>(points) / static_cast<double>(qint64{one.width()} * one.height());
}

/// As it is kept, but for what tells of the day: dates, and in some windows bars of a chart.
void expectAsKept(const QImage& picture, const std::string& state, ColourScheme scheme) {
    constexpr double kDates = 0.005;
    constexpr double kBars = 0.04;
    static const std::set<std::string> kWithBars = {"principal", "ficha-cliente"};
    const QString folder = qEnvironmentVariable("VALTRINO_KEPT_PICTURES");
    if (folder.isEmpty() || state == "diretorio") // the folders of this machine
        return;
    const QString name =
        QString("%1-%2-100.png")
            .arg(QString::fromStdString(state), scheme == ColourScheme::dark ? "dark" : "light");
    const QImage kept(QDir(folder).filePath(name));
    const std::string advice = name.toStdString() + " is of another window: scripts/pictures.sh";
    ASSERT_EQ(kept.size(), picture.size()) << advice;
    EXPECT_LT(difference(picture, kept), kWithBars.contains(state) ? kBars : kDates) << advice;
}

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
        expectAsKept(picture, state.name, GetParam());
        for (const QWidget* widget : window.findChildren<QWidget*>()) {
            if (!widget->isVisibleTo(&window) || !widget->isEnabled() ||
                textOf(*widget).trimmed().isEmpty())
                continue;
            if (widget->visibleRegion().isEmpty())
                continue;
            ++texts;
            EXPECT_GE(contrastOf(*widget, window, picture), kLeast)
                << state.name << ": " << widget->objectName().toStdString();
        }
    }
    EXPECT_GT(texts, 250);
}

// An icon that stands out mustn't hide that the words don't.
TEST_P(Pictures, AreMeasuredWithoutTheIconsOfButtons) {
    QWidget window;
    auto* row = new QHBoxLayout(&window);
    QPalette faint = QApplication::palette();
    faint.setColor(QPalette::ButtonText, faint.color(QPalette::Mid));
    std::vector<QAbstractButton*> buttons;
    auto* push = new QPushButton("Salvar");
    buttons.push_back(push);
    for (const Qt::ToolButtonStyle place :
         {Qt::ToolButtonTextBesideIcon, Qt::ToolButtonTextUnderIcon}) {
        auto* tool = new QToolButton;
        tool->setToolButtonStyle(place);
        tool->setText("Salvar");
        buttons.push_back(tool);
    }
    for (QAbstractButton* button : buttons) {
        button->setIcon(Icons::named("save"));
        row->addWidget(button);
    }
    window.show();
    QCoreApplication::processEvents();
    constexpr double kLeast = 4.5;
    for (const QAbstractButton* button : buttons)
        EXPECT_GE(contrastOf(*button, window, pictureOf(window)), kLeast);
    for (QAbstractButton* button : buttons)
        button->setPalette(faint);
    for (const QAbstractButton* button : buttons)
        EXPECT_LT(contrastOf(*button, window, pictureOf(window)), kLeast);
}

TEST_P(Pictures, FollowTheSchemeOfTheSystem) {
    for (const State& state : states()) {
        const QImage picture = pictureOf(state.show());
        const bool dark = luminance(picture.pixelColor(2, 2)) < 0.5;
        EXPECT_EQ(dark, GetParam() == ColourScheme::dark) << state.name;
    }
}

} // namespace
