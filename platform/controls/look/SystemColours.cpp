#include "controls/look/SystemColours.h"

#include <QGuiApplication>
#include <QPalette>
#include <QStyleHints>

#if QT_VERSION < QT_VERSION_CHECK(6, 5, 0) && defined(VALTRINO_SESSION_BUS)
#include "controls/look/DesktopSettings.h"
#endif

#include <utility>

#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)

namespace {

ColourScheme told() {
    return QGuiApplication::styleHints()->colorScheme() == Qt::ColorScheme::Dark
               ? ColourScheme::dark
               : ColourScheme::light;
}

} // namespace

SystemColours::SystemColours(QObject* parent, const QString&) : QObject(parent), scheme_(told()) {
    connect(QGuiApplication::styleHints(), &QStyleHints::colorSchemeChanged, this,
            [this] { take(told()); });
}

#else

SystemColours::SystemColours(QObject* parent, const QString& busAddress) : QObject(parent) {
    const QPalette palette = QGuiApplication::palette();
    if (palette.color(QPalette::Window).lightness() <
        palette.color(QPalette::WindowText).lightness())
        scheme_ = ColourScheme::dark;
#ifdef VALTRINO_SESSION_BUS
    if (!busAddress.isEmpty()) {
        const auto* desktop = new DesktopSettings(this, busAddress);
        connect(desktop, &DesktopSettings::schemeTold, this, &SystemColours::take);
    }
#else
    Q_UNUSED(busAddress);
#endif
}

#endif

void SystemColours::take(ColourScheme scheme) {
    if (std::exchange(scheme_, scheme) != scheme)
        emit changed();
}

#include "controls/look/moc_SystemColours.cpp"
