#include "controls/look/DesktopSettings.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace {

// The settings portal, as every Linux desktop offers it.
constexpr const char* kService = "org.freedesktop.portal.Desktop";
constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kInterface = "org.freedesktop.portal.Settings";
constexpr const char* kGroup = "org.freedesktop.appearance";
constexpr const char* kKey = "color-scheme";

enum : unsigned { preferDark = 1, preferLight = 2 };

} // namespace

DesktopSettings::DesktopSettings(QObject* parent, const QString& busAddress)
    : QObject(parent), busName_(QString("settings %1").arg(reinterpret_cast<quintptr>(this))),
      bus_(QDBusConnection::connectToBus(busAddress, busName_)) {
    if (bus_.isConnected())
        ask();
}

DesktopSettings::~DesktopSettings() { QDBusConnection::disconnectFromBus(busName_); }

void DesktopSettings::ask() {
    bus_.connect(kService, kPath, kInterface, "SettingChanged", this,
                 SLOT(settingChanged(QDBusMessage)));
    QDBusMessage question = QDBusMessage::createMethodCall(kService, kPath, kInterface, "Read");
    question << kGroup << kKey;
    const auto* answer = new QDBusPendingCallWatcher(bus_.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this,
            [this](QDBusPendingCallWatcher* call) {
                const QDBusPendingReply<QDBusVariant> reply = *call;
                if (!reply.isError())
                    tell(reply.value().variant());
                call->deleteLater();
            });
}

void DesktopSettings::settingChanged(const QDBusMessage& message) {
    const QVariantList news = message.arguments(); // group, key, value
    if (news.size() == 3 && news[0] == kGroup && news[1] == kKey)
        tell(news[2].value<QDBusVariant>().variant());
}

void DesktopSettings::tell(const QVariant& value) {
    // Read() wraps its answer once more than the signal does.
    const bool wrapped = value.metaType() == QMetaType::fromType<QDBusVariant>();
    const QVariant plain = wrapped ? value.value<QDBusVariant>().variant() : value;
    if (plain.toUInt() == preferDark)
        emit schemeTold(ColourScheme::dark);
    else if (plain.toUInt() == preferLight)
        emit schemeTold(ColourScheme::light);
}

#include "controls/look/moc_DesktopSettings.cpp"
