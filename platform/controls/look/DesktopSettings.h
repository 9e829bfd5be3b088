#pragma once

#include "controls/look/ColourScheme.h"

#include <QDBusConnection>
#include <QDBusMessage>

/// What the Linux desktop tells of its settings over the session bus: the colour scheme. A desktop
/// that doesn't answer tells nothing; nobody waits for it.
class DesktopSettings final : public QObject {
    Q_OBJECT
public:
    DesktopSettings(QObject* parent, const QString& busAddress);
    ~DesktopSettings() override;

    /// QtDBus calls it, by its name, for each setting that changes.
    Q_INVOKABLE void settingChanged(const QDBusMessage& message);

signals:
    /// Once in answer to our asking, then at each change. Not told while the operator has no
    /// preference.
    void schemeTold(ColourScheme scheme);

private:
    void ask();
    void tell(const QVariant& value);

    QString busName_;
    QDBusConnection bus_;
};
