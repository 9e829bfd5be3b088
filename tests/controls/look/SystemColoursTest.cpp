// Following the desktop's colours, on a session bus of the test's own.
#include "controls/look/SystemColours.h"

#include "support/QtPrinters.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>

#include <gtest/gtest.h>

namespace {

/// A desktop that answers what it is asked.
class Desktop final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")
public:
    uint scheme = 0;

    [[nodiscard]] Q_INVOKABLE QDBusVariant Read(const QString& group, const QString& key) const {
        const bool asked = group == "org.freedesktop.appearance" && key == "color-scheme";
        return QDBusVariant(QVariant::fromValue(QDBusVariant(asked ? scheme : 0U)));
    }
};

class DesktopColours : public testing::Test {
protected:
    void SetUp() override {
        if (QT_VERSION >= QT_VERSION_CHECK(6, 5, 0))
            GTEST_SKIP() << "Qt itself follows the desktop";
        if (QStandardPaths::findExecutable("dbus-daemon").isEmpty())
            GTEST_SKIP() << "no session bus to be had";
        daemon_.start("dbus-daemon", {"--session", "--nofork", "--print-address"});
        ASSERT_TRUE(daemon_.waitForReadyRead());
        address_ = QString::fromUtf8(daemon_.readLine()).trimmed();
        QDBusConnection bus = QDBusConnection::connectToBus(address_, "desktop");
        ASSERT_TRUE(bus.registerObject("/org/freedesktop/portal/desktop", &desktop_,
                                       QDBusConnection::ExportAllInvokables));
        ASSERT_TRUE(bus.registerService("org.freedesktop.portal.Desktop"));
    }
    void TearDown() override {
        QDBusConnection::disconnectFromBus("desktop");
        daemon_.kill();
        daemon_.waitForFinished();
    }

    static void change(uint now) {
        QDBusMessage news = QDBusMessage::createSignal(
            "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings", "SettingChanged");
        news << "org.freedesktop.appearance"
             << "color-scheme" << QVariant::fromValue(QDBusVariant(now));
        ASSERT_TRUE(QDBusConnection("desktop").send(news));
    }

    QProcess daemon_;
    QString address_;
    Desktop desktop_;
};

TEST_F(DesktopColours, AreTakenFromTheDesktopAndFollowed) {
    desktop_.scheme = 1;
    const SystemColours colours(nullptr, address_);
    QSignalSpy changes(&colours, &SystemColours::changed);
    EXPECT_EQ(colours.scheme(), ColourScheme::light) << "before the desktop has answered";
    ASSERT_TRUE(changes.wait());
    EXPECT_EQ(colours.scheme(), ColourScheme::dark);
    change(2);
    ASSERT_TRUE(changes.wait());
    EXPECT_EQ(colours.scheme(), ColourScheme::light);
}

TEST_F(DesktopColours, StayWhereTheOperatorHasNoPreference) {
    const SystemColours colours(nullptr, address_);
    QSignalSpy changes(&colours, &SystemColours::changed);
    change(1);
    ASSERT_TRUE(changes.wait());
    change(0);
    change(2);
    ASSERT_TRUE(changes.wait());
    EXPECT_EQ(changes.count(), 2);
}

TEST(SystemColours, AreLightWhereNothingIsSaid) {
    EXPECT_EQ(SystemColours(nullptr, "").scheme(), ColourScheme::light);
    EXPECT_EQ(SystemColours(nullptr, "unix:path=/nowhere").scheme(), ColourScheme::light);
}

} // namespace

#include "SystemColoursTest.moc"
