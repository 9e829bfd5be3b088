#include "controls/window/NavigationBar.h"

#include "controls/look/Icons.h"

#include <QHBoxLayout>
#include <QToolButton>

namespace {

struct Look {
    const char* icon;
    const char* toolTip;
};

constexpr std::array<Look, NavigationBar::kCount> kLooks = {
    {
     {"first", "Início do Arquivo"},
     {"previous", "Registro Anterior"},
     {"next", "Próximo Registro"},
     {"last", "Fim do Arquivo"},
     }
};

} // namespace

NavigationBar::NavigationBar(QWidget* parent) : QWidget(parent) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(2);
    for (int index = 0; index < kCount; ++index) {
        const Look& look = kLooks[static_cast<std::size_t>(index)];
        auto* button = new QToolButton(this);
        button->setIcon(Icons::named(look.icon));
        button->setIconSize(QSize(20, 20));
        button->setAutoRaise(true);
        button->setToolTip(QString::fromUtf8(look.toolTip));
        button->setAccessibleName(button->toolTip());
        // By mouse too: walking on is leaving the field the operator was in.
        button->setFocusPolicy(Qt::StrongFocus);
        connect(button, &QToolButton::clicked, this, [this, index] { emit clicked(index); });
        row->addWidget(button);
        buttons_[static_cast<std::size_t>(index)] = button;
    }
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QToolButton* NavigationBar::button(int index) const {
    return buttons_.at(static_cast<std::size_t>(index));
}

#include "controls/window/moc_NavigationBar.cpp"
