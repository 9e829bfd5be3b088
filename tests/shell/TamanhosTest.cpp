// The windows with larger texts and on small screens: nothing is cut, nothing stands over anything
// else, and every window fits on the shop's smallest screen or scrolls there.
#include "shell/EveryWindow.h"
#include "support/FormChecks.h"

#include <QScreen>
#include <QScrollArea>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::IsEmpty;

/// What the desktop takes of a window's height for its title, in the units of the window.
constexpr int kTitleBar = 24;

/// How many steps, of 15 % each, the operator has made the texts of the desktop larger.
class Sizes : public EveryWindow, public testing::WithParamInterface<int> {
protected:
    void SetUp() override {
        font_ = QApplication::font();
        QFont larger = font_;
        constexpr qreal kStep = 0.15;
        larger.setPointSizeF(font_.pointSizeF() * (1 + kStep * GetParam()));
        QApplication::setFont(larger);
        EveryWindow::SetUp();
    }
    void TearDown() override {
        EveryWindow::TearDown();
        QApplication::setFont(font_);
    }

    static QSize room() {
        return QGuiApplication::primaryScreen()->availableSize() - QSize(0, kTitleBar);
    }
    static bool fits(const QSize& size) { return size.boundedTo(room()) == size; }

    static std::vector<std::string> faults(const QWidget& window, const std::string& where) {
        std::vector<std::string> found;
        for (const QString& fault : cutTexts(window) + overlaps(window))
            found.push_back(where + ": " + fault.toStdString());
        return found;
    }

private:
    QFont font_;
};

INSTANTIATE_TEST_SUITE_P(Steps, Sizes, testing::Values(0, 1, 2),
                         [](const auto& chosen) { return std::to_string(chosen.param); });

TEST_P(Sizes, CutNoTextAndPutNothingOverAnother) {
    std::vector<std::string> found;
    const auto check = [&](const QWidget& window, const std::string& where) {
        for (int events = 0; events < 5; ++events)
            QCoreApplication::processEvents();
        std::ranges::move(faults(window, where), std::back_inserter(found));
    };
    for (const State& state : states()) {
        QWidget& window = state.show();
        check(window, state.name + " as it opens");
        window.resize(window.minimumSizeHint().expandedTo(window.minimumSize()));
        check(window, state.name + " as small as it can be");
        window.resize(room());
        check(window, state.name + " maximised");
    }
    EXPECT_THAT(found, IsEmpty());
}

// Where a window is too large for its screen it scrolls, and what is used comes into sight.
TEST_P(Sizes, ShowWhatHasTheFocus) {
    int seen = 0;
    for (const State& state : states()) {
        QWidget& window = state.show();
        activate(window);
        for (QWidget* control : window.findChildren<QWidget*>()) {
            if (!(control->focusPolicy() & Qt::TabFocus) || !control->isVisibleTo(&window) ||
                !control->isEnabled() || control->window() != &window)
                continue;
            control->setFocus(Qt::TabFocusReason);
            QCoreApplication::processEvents();
            if (!control->hasFocus())
                continue;                // a handler has sent it on
            constexpr int kOfAList = 60; // its heading and a row at least
            const QRect shown = seenOf(*control);
            EXPECT_TRUE(shown.contains(control->mapTo(&window, QPoint())) &&
                        shown.width() >= std::min(control->width(), window.width() / 2) &&
                        shown.height() >= std::min(control->height(), kOfAList))
                << state.name << ": " << control->objectName().toStdString();
            ++seen;
        }
    }
    EXPECT_GT(seen, 100);
}

TEST_P(Sizes, FitOnTheScreen) {
    const bool large = room().width() >= 1366; // nothing need scroll on it
    for (const State& state : states()) {
        const QWidget& window = state.show();
        EXPECT_FALSE(large && window.findChild<QScrollArea*>()) << state.name;
        EXPECT_TRUE(window.isMaximized() || fits(window.size()))
            << state.name << ": " << window.width() << " x " << window.height();
    }
}

} // namespace
