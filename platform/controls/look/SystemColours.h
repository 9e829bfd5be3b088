#pragma once

#include "controls/look/ColourScheme.h"

#include <QObject>
#include <QString>

/// Whether the operator has set the system to light or to dark colours, and each change of that.
///
/// Qt tells it from 6.5 on. Before, it is taken from the palette that the platform brings and, on
/// Linux, asked of the desktop over the session bus; the desktop's answer comes some moments later,
/// as a change, so that the start doesn't wait for it.
class SystemColours final : public QObject {
    Q_OBJECT
public:
    /// Make it before the program sets a palette of its own.
    /// @param busAddress the session bus to ask, if Qt can't tell; "" for none.
    explicit SystemColours(QObject* parent, const QString& busAddress =
                                                qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"));

    /// Light if the system says nothing.
    [[nodiscard]] ColourScheme scheme() const noexcept { return scheme_; }

signals:
    void changed();

private:
    void take(ColourScheme scheme);

    ColourScheme scheme_ = ColourScheme::light;
};
