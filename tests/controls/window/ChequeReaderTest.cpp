#include "controls/window/ChequeReader.h"

#include "controls/window/Failure.h"
#include "support/FormTest.h"

#include <QDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QVBoxLayout>

#include <gmock/gmock.h>

namespace {

constexpr char kLine[] = "<34137814<0090004285>081430432989:";
constexpr char kDigits[] = "341378140090004285081430432989";

class Reader : public FormTest {
protected:
    Reader() {
        QWidget& window = dialog_;
        auto* inside = new QVBoxLayout(&window);
        inside->addWidget(&box_);
        inside->addWidget(&button_);
        button_.setDefault(true);
        QObject::connect(&button_, &QPushButton::clicked, [this] { ++pressed_; });
        window.show();
        activate(window);
        box_.setFocus();
    }

    /// What the reader has told once the keys have paused.
    QStringList told() {
        QStringList lines;
        for (const QDeadlineTimer patience(60'000); said_.empty() && !patience.hasExpired();)
            said_.wait(50);
        for (const QList<QVariant>& each : said_)
            lines += each.front().toString();
        return lines;
    }
    /// Waits for the keys to be given back.
    void becomes(const QString& text) {
        for (const QDeadlineTimer patience(60'000); box_.text() != text && !patience.hasExpired();)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        EXPECT_EQ(box_.text(), text);
        EXPECT_TRUE(said_.empty());
    }

    QDialog dialog_;
    QLineEdit box_;
    QPushButton button_;
    int pressed_ = 0;
    ChequeReader reader_{dialog_};
    QSignalSpy said_{&reader_, &ChequeReader::lineRead};
};

TEST_F(Reader, TellsTheDigitsAndLeavesTheControlAlone) {
    box_.setText("Ana");
    type(kLine);
    EXPECT_EQ(told(), QStringList(kDigits));
    EXPECT_EQ(box_.text(), "Ana");
}

TEST_F(Reader, MayPressOtherKeysForTheMarks) {
    for (const QChar c : QString(kLine)) {
        if (!c.isDigit())
            for (const Qt::Key key : {Qt::Key_Shift, Qt::Key_AltGr}) {
                QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
                QApplication::sendEvent(&box_, &press);
            }
        type(c);
    }
    EXPECT_EQ(told(), QStringList(kDigits));
    EXPECT_EQ(box_.text(), "");
}

TEST_F(Reader, TakesTheEnterBehindTheLineAlong) {
    type(kLine);
    press(Qt::Key_Return);
    EXPECT_EQ(told(), QStringList(kDigits));
    EXPECT_EQ(pressed_, 0);
    press(Qt::Key_Return);
    EXPECT_EQ(pressed_, 1); // the clerk's own
}

TEST_F(Reader, NeedsNoMarkAtTheEndAndTakesAnother) {
    for (const char* mark : {"", ":", ";", "Ç"}) {
        said_.clear();
        type(QString(kLine).chopped(1) + mark);
        EXPECT_EQ(told(), QStringList(kDigits)) << mark;
        EXPECT_EQ(box_.text(), "");
    }
}

TEST_F(Reader, TellsWhichDigitsCouldNotBeRead) {
    type(QString(kLine).replace("8143", "8?43"));
    EXPECT_EQ(told(), QStringList(QString(kDigits).replace("8143", "8?43")));
}

TEST_F(Reader, LeavesToTheControlWhatAClerkTypes) {
    type("<b");
    EXPECT_EQ(box_.text(), "<b");
    type("<12");
    EXPECT_EQ(box_.text(), "<b"); // it may be a line yet
    becomes("<b<12");
    type("<");
    type("x");
    EXPECT_EQ(box_.text(), "<b<12<x");
}

TEST_F(Reader, LeavesALineThatIsCutOrTooLong) {
    type(QString(kLine).left(20));
    becomes(QString(kLine).left(20));
    box_.clear();
    type(QString(kLine).chopped(1) + "7");
    EXPECT_EQ(box_.text(), QString(kLine).chopped(1) + "7");
}

TEST_F(Reader, BeginsAnewWithTheMarkOfABeginning) {
    type("<12");
    type(kLine);
    EXPECT_EQ(told(), QStringList(kDigits));
    EXPECT_EQ(box_.text(), "<12");
}

TEST_F(Reader, TellsOfNothingAsLongAsNobodyListens) {
    type(kLine);
    {
        const HandlersPaused paused;
        EXPECT_FALSE(said_.wait(400));
    }
    EXPECT_EQ(told(), QStringList(kDigits));
}

TEST_F(Reader, LooksAtItsOwnWindowOnly) {
    QLineEdit other;
    other.show();
    activate(other);
    type(kLine);
    EXPECT_EQ(other.text(), kLine);
    EXPECT_TRUE(said_.empty());
}

} // namespace
