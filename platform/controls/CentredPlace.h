#pragma once

#include <QMargins>

#include <optional>

class QWidget;

/// Where a window stands when it comes up: with the frame that the desktop puts around it in the
/// middle of its screen. What the frame measures is told when the window is on show: until then it
/// is taken to be as that of the window in front.
class CentredPlace {
public:
    explicit CentredPlace(QWidget& window) : window_(window) {}

    /// Puts the window there; with `top`, so many pixels under the screen's upper edge.
    void centre(std::optional<int> top);
    /// The window is on show, in front of the others: it has its frame. From here on its place is
    /// the operator's.
    void settle();

private:
    void place();

    QWidget& window_;
    bool due_ = false; ///< the frame isn't known yet
    QMargins frame_;
    std::optional<int> top_;
};
