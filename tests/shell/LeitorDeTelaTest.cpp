// What a screen reader finds in the windows: everything has a name, and what it holds is its
// value.
#include "shell/EveryWindow.h"

#include <QAccessible>
#include <QLabel>

#include <gmock/gmock.h>

#include <map>
#include <set>

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

struct Spoken {
    QAccessibleInterface* at;
    QAccessible::Role role;
    QString name;
    QString value;
    QString description;
};

void collect(QAccessibleInterface* at, std::vector<Spoken>& into) {
    if (!at || !at->isValid() || at->state().invisible)
        return;
    into.push_back({at, at->role(), at->text(QAccessible::Name), at->text(QAccessible::Value),
                    at->text(QAccessible::Description)});
    for (int i = 0; i < at->childCount(); ++i)
        collect(at->child(i), into);
}

std::vector<Spoken> allOf(QWidget& window) {
    std::vector<Spoken> all;
    collect(QAccessible::queryAccessibleInterface(&window), all);
    return all;
}

bool holdsAValue(QAccessible::Role role) {
    static const std::set<QAccessible::Role> kRoles = {QAccessible::EditableText,
                                                       QAccessible::ComboBox, QAccessible::SpinBox,
                                                       QAccessible::Document};
    return kRoles.contains(role);
}

bool isControl(QAccessible::Role role) {
    static const std::set<QAccessible::Role> kRoles = {
        QAccessible::PushButton,  QAccessible::ButtonMenu, QAccessible::CheckBox,
        QAccessible::RadioButton, QAccessible::Tree,       QAccessible::Table,
        QAccessible::List};
    return holdsAValue(role) || kRoles.contains(role);
}

class ScreenReader : public EveryWindow {
protected:
    static std::string called(const Spoken& spoken) {
        const QObject* object = spoken.at->object();
        return (object ? object->objectName() + " (" + object->metaObject()->className() + ")"
                       : QString("part"))
                   .toStdString() +
               " \"" + spoken.name.toStdString() + "\"";
    }
    static std::vector<std::string> faults(QWidget& window) {
        std::vector<std::string> found;
        std::map<std::pair<QAccessible::Role, QString>, int> times;
        for (const Spoken& spoken : allOf(window)) {
            if (spoken.role == QAccessible::StaticText && spoken.name.trimmed().isEmpty())
                found.push_back("a text without words: " + called(spoken));
            if (!isControl(spoken.role))
                continue;
            if (spoken.name.trimmed().isEmpty())
                found.push_back("without a name: " + called(spoken));
            if (spoken.name.endsWith(':') || spoken.name.contains('&'))
                found.push_back("a name with a label's signs: " + called(spoken));
            if (holdsAValue(spoken.role) && !spoken.value.isEmpty() && spoken.value == spoken.name)
                found.push_back("named by what it holds: " + called(spoken));
            if (++times[{spoken.role, spoken.name}] == 2)
                found.push_back("twice: " + called(spoken));
        }
        return found;
    }

    /// The control of that name, which must be there once.
    static QAccessibleInterface& find(QWidget& window, const QString& name) {
        for (const Spoken& spoken : allOf(window))
            if (isControl(spoken.role) && spoken.name == name)
                return *spoken.at;
        throw std::runtime_error("nothing is called " + name.toStdString());
    }
};

TEST_F(ScreenReader, FindsANameForEverythingAndNothingTwice) {
    for (const State& state : states())
        EXPECT_THAT(faults(state.show()), IsEmpty()) << state.name;
}

TEST_F(ScreenReader, ReadsPromptsAndHintsAsValuesAndDescriptions) {
    auto& window = MDICheques::instance();
    MDICheques::mostrarMensagens();
    window.show();
    auto& form = open<FrmLancarCheques>();
    const QString prompt = control<QLabel>(window, "pnlMensagem").text();
    std::vector<QString> read;
    for (const Spoken& spoken : allOf(window))
        if (spoken.name == "Mensagem")
            read.push_back(spoken.value);
    EXPECT_THAT(read, testing::ElementsAre(prompt));
    EXPECT_NE(prompt, "");
    EXPECT_THAT(find(form, "Banco").text(QAccessible::Description).toStdString(),
                HasSubstr("banco"));
}

} // namespace
