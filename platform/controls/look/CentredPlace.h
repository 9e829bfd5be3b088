#pragma once

#include <QMargins>
#include <QRect>

#include <optional>

class QWidget;

/// Where a window stands when it comes up, and how large: with the frame that the desktop puts
/// around it never larger than its screen, and in the middle of that if it asks for it. What the
/// frame measures is told when the window is on show: until then it is taken to be as that of the
/// window in front. What needs more than the screen scrolls, see ScreenFit.h.
class CentredPlace {
public:
    explicit CentredPlace(QWidget& window) : window_(window) {}

    /// Puts the window in the middle, as soon as it is on show; with `top`, so many pixels under
    /// the screen's upper edge.
    void centre(std::optional<int> top);
    /// The window comes up. The first time it gets its size; later that is the operator's.
    void open();
    /// What the window needs may have grown while it is on show.
    void stayWithin();
    /// The window is on show, in front of the others: it has its frame. From here on its place is
    /// the operator's.
    void settle();

private:
    /// Where windows may stand.
    [[nodiscard]] QRect area() const;
    /// What there is of that beside this window's frame.
    [[nodiscard]] QSize room() const;
    void place();

    QWidget& window_;
    bool opened_ = false;
    bool centred_ = false;
    bool due_ = false; ///< the frame isn't known yet
    QMargins frame_;
    std::optional<int> top_;
};
