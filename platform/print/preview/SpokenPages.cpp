#include "print/preview/SpokenPages.h"

#include "controls/look/Spoken.h"
#include "print/PageView.h"

namespace {

class SpokenPages final : public SpokenText {
public:
    explicit SpokenPages(PageView& pages)
        : SpokenText(&pages, QAccessible::Document), pages_(pages) {}

protected:
    [[nodiscard]] QString shown() const override { return pages_.spokenPage(); }

private:
    PageView& pages_;
};

} // namespace

void installSpokenPages() {
    installSpoken();
    installAccount<SpokenPages, PageView>();
}
