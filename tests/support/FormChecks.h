#pragma once

#include <QStringList>

class QRect;
class QWidget;

/// What every window is held to, whatever it is for. Each of these answers with a line for each
/// fault, nothing if there is none; the window must be on show.
///
///     EXPECT_EQ(faultsOf(open<frmBancos>()), QStringList());

/// Controls that can have the focus but have no name for a screen reader.
[[nodiscard]] QStringList controlsWithoutName(const QWidget& window);
/// Access keys that two controls of the window share.
[[nodiscard]] QStringList sharedAccessKeys(const QWidget& window);
/// Labels, buttons, frames, tabs, headings of lists and what fields and lists hold, but for long
/// words in lists, where it has too little room.
[[nodiscard]] QStringList cutTexts(const QWidget& window);
/// Controls that stand over each other, or reach out of what they stand in.
[[nodiscard]] QStringList overlaps(const QWidget& window);

/// What is seen of a control, in the window: what it stands in may scroll.
[[nodiscard]] QRect seenOf(const QWidget& control);

/// All of these faults.
[[nodiscard]] QStringList faultsOf(const QWidget& window);
