#pragma once

class QWidget;

/// Clears the controls of a window by their kind, however deep they stand and hidden ones too:
///
///     text box                    empty
///     drop-down list              no entry chosen, then an empty text
///     check box                   unticked
///     money box                   0
///     date picker                 today
///     masked text                 empty
///     any other                   left alone
///
/// A box that can't be typed into is cleared like any other.
void limparControles(QWidget& window);

/// Whether a widget is a part of another control, which knows itself what goes on in it.
[[nodiscard]] bool isPartOfControl(const QWidget& widget);
