#pragma once

#include <QStringList>

class QWidget;

/// What every window is held to, whatever it is for. Each of these answers with a line for each
/// fault, nothing if there is none; the window must be on show.
///
///     EXPECT_EQ(faultsOf(open<frmBancos>()), QStringList());

/// Controls that can have the focus but have no name for a screen reader.
[[nodiscard]] QStringList controlsWithoutName(const QWidget& window);
/// Access keys that two controls of the window share.
[[nodiscard]] QStringList sharedAccessKeys(const QWidget& window);
/// Labels, buttons and headings of lists whose text has too little room.
[[nodiscard]] QStringList cutTexts(const QWidget& window);

/// All of these.
[[nodiscard]] QStringList faultsOf(const QWidget& window);
