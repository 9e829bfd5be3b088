#include "controls/window/WindowList.h"

#include <algorithm>

WindowList& WindowList::instance() {
    static WindowList list;
    return list;
}

QWidget* WindowList::find(std::type_index type) const {
    const auto found = std::ranges::find(windows_, type, &Entry::type);
    return found == windows_.end() ? nullptr : found->window.get();
}

bool WindowList::retire(const QWidget& window) {
    const auto found = std::ranges::find_if(
        windows_, [&](const Entry& entry) { return entry.window.get() == &window; });
    if (found == windows_.end())
        return false;
    std::erase_if(retired_, [](const QPointer<QWidget>& old) { return old.isNull(); });
    retired_.emplace_back(found->window.release());
    windows_.erase(found);
    return true;
}

void WindowList::clear() {
    // One at a time: a window that goes may make or retire another.
    while (!windows_.empty()) {
        const auto window = std::move(windows_.back().window);
        windows_.pop_back();
    }
    while (!retired_.empty()) {
        const std::unique_ptr<QWidget> window(retired_.back().data());
        retired_.pop_back();
    }
}
