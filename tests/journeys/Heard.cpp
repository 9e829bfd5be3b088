// What the desktop tells a screen reader of the programs at work, as long as it runs: a line each
// on the standard output, "<what> <kind of control> "<name>": <text>". It asks the desktop's bus
// for the bus of the screen readers, which makes programs tell.
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

constexpr const char* kAccessible = "org.a11y.atspi.Accessible";
constexpr int kPatienceMs = 5000; ///< with a program that doesn't answer

/// A control of a program, as that tells it.
class Told {
public:
    Told(const QDBusConnection& bus, const QDBusMessage& event)
        : bus_(bus), service_(event.service()), path_(event.path()) {}

    [[nodiscard]] QString kind() const { return ask(kAccessible, "GetRoleName", {}).toString(); }
    [[nodiscard]] QString property(const char* name) const {
        const QVariant found = ask("org.freedesktop.DBus.Properties", "Get", {kAccessible, name});
        return found.value<QDBusVariant>().variant().toString();
    }
    [[nodiscard]] QString text() const {
        return ask("org.a11y.atspi.Text", "GetText", {0, -1}).toString();
    }

private:
    [[nodiscard]] QVariant ask(const char* interface, const char* what,
                               const QVariantList& with) const {
        QDBusMessage call = QDBusMessage::createMethodCall(service_, path_, interface, what);
        call.setArguments(with);
        const QDBusMessage answer = bus_.call(call, QDBus::Block, kPatienceMs);
        const bool gone = answer.type() == QDBusMessage::ErrorMessage;
        return gone ? QVariant() : answer.arguments().value(0);
    }

    QDBusConnection bus_;
    QString service_;
    QString path_;
};

class Listener final : public QObject {
    Q_OBJECT
public:
    explicit Listener(const QDBusConnection& bus) : bus_(bus) {}

    bool listen() {
        QDBusMessage wish =
            QDBusMessage::createMethodCall("org.a11y.atspi.Registry", "/org/a11y/atspi/registry",
                                           "org.a11y.atspi.Registry", "RegisterEvent");
        wish << "object:";
        return bus_.connect("", "", "org.a11y.atspi.Event.Object", "", this,
                            SLOT(heard(QDBusMessage))) &&
               bus_.call(wish).type() == QDBusMessage::ReplyMessage;
    }

    /// QtDBus calls it, by its name, for each event.
    Q_INVOKABLE void heard(const QDBusMessage& event) {
        const QVariantList news = event.arguments(); // detail, two numbers, a value
        const QString what = event.member() + ":" + news.value(0).toString();
        const bool on = news.value(1).toInt() == 1;
        const Told told(bus_, event);
        if (what == "TextChanged:insert")
            say("text", told, news.value(3).value<QDBusVariant>().variant().toString());
        else if (what == "PropertyChange:accessible-description")
            say("description", told, told.property("Description"));
        else if (what == "StateChanged:focused" && on)
            say("focus", told, told.property("Description"));
        else if (what == "StateChanged:checked")
            say(on ? "ticked" : "unticked", told, "");
        else if (what == "StateChanged:showing" && on && told.kind() == "notification")
            say("news", told, told.text());
    }

private:
    static void say(const char* what, const Told& told, const QString& text) {
        const QString line = QString("%1 %2 \"%3\": %4")
                                 .arg(what, told.kind(), told.property("Name"), text)
                                 .replace('\n', ' ');
        std::puts(qUtf8Printable(line));
        std::fflush(stdout);
    }

    QDBusConnection bus_;
};

} // namespace

int main(int argc, char* argv[]) {
    const QCoreApplication program(argc, argv);
    const QDBusReply<QString> address =
        QDBusConnection::sessionBus().call(QDBusMessage::createMethodCall(
            "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress"));
    if (!address.isValid()) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(address.error().message()));
        return EXIT_FAILURE;
    }
    Listener listener(QDBusConnection::connectToBus(address.value(), "readers"));
    if (!listener.listen())
        return EXIT_FAILURE;
    std::puts("listening");
    std::fflush(stdout);
    return QCoreApplication::exec();
}

#include "Heard.moc"
