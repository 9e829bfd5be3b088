// main() of every test of windows and controls: a QApplication that needs no screen.
#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    // Also when started by hand; a set variable wins, to watch a test on a real screen.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
