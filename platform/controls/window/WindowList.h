#pragma once

#include <QPointer>
#include <QWidget>

#include <memory>
#include <typeindex>
#include <utility>
#include <vector>

/// The windows of the program: one of each class, made on first use. `main` empties the list before
/// the QApplication goes, as no window may outlive it; so a window is never a static object.
///
///     frmBancos& frmBancos::instance() { return WindowList::instance().one<frmBancos>(); }
class WindowList {
public:
    static WindowList& instance();

    WindowList(const WindowList&) = delete;
    WindowList& operator=(const WindowList&) = delete;

    /// The window of this class; made now if there is none or if the last one was retired.
    template <class Window>
    Window& one();

    /// Takes the window out of the list, so that the next one() makes a new one. Its object lives
    /// on until it deletes itself (QObject::deleteLater) or clear() does, since its own handler may
    /// be the one that retires it.
    /// @return false if the window isn't in the list.
    bool retire(const QWidget& window);

    /// Destroys every window, the youngest first.
    void clear();

private:
    struct Entry {
        std::type_index type;
        std::unique_ptr<QWidget> window;
    };

    WindowList() = default;
    ~WindowList() = default;
    [[nodiscard]] QWidget* find(std::type_index type) const;

    std::vector<Entry> windows_;
    std::vector<QPointer<QWidget>> retired_;
};

template <class Window>
Window& WindowList::one() {
    if (QWidget* found = find(typeid(Window)))
        return static_cast<Window&>(*found);
    auto made = std::make_unique<Window>();
    Window& window = *made;
    windows_.push_back({typeid(Window), std::move(made)});
    return window;
}
