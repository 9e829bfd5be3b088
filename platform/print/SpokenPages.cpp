#include "print/SpokenPages.h"

#include "print/PageView.h"
#include "print/Relatorio.h"

#include <QAccessibleWidget>

namespace {

class SpokenPages final : public QAccessibleWidget {
public:
    explicit SpokenPages(PageView& pages)
        : QAccessibleWidget(&pages, QAccessible::Document), pages_(pages) {}

    [[nodiscard]] QString text(QAccessible::Text which) const override {
        return which == QAccessible::Value ? pages_.spokenPage() : QAccessibleWidget::text(which);
    }

private:
    PageView& pages_;
};

} // namespace

void installSpokenPages() {
    [[maybe_unused]] static const bool once = [] {
        QAccessible::installFactory(
            [](const QString& className, QObject* object) -> QAccessibleInterface* {
                auto* pages = className == "PageView" ? qobject_cast<PageView*>(object) : nullptr;
                return pages ? new SpokenPages(*pages) : nullptr;
            });
        return true;
    }();
}
