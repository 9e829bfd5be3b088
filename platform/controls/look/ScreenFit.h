#pragma once

class QSize;
class QWidget;

/// Where texts are so large, or the screen so small, that a window has no room on it: the part
/// between heading and foot scrolls, and if they too are wider than the screen, the whole window.
/// What has the focus is always brought into sight.

/// Has the window scroll if the least that it needs is more than `room`. Once it scrolls it stays
/// so: its bars show only when they are needed.
/// @param window its fields stand in a column with its heading and its foot
/// @param room what the screen has for it, the window's frame not counted
/// @return whether it begins to
bool scrollWhereTooLarge(QWidget& window, const QSize& room);
