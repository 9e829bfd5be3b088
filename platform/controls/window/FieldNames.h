#pragma once

class QWidget;

/// What the controls of a window are called by a screen reader and in what is said of them: as the
/// label whose buddy they are calls them, lists too, of which Qt doesn't know it. One that already
/// has a name keeps it.
void nameByLabels(const QWidget& window);
