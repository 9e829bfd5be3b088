#pragma once

#include "controls/look/SystemColours.h"

#include <QFont>

class QApplication;

/// How the whole program looks: Fusion, one accent colour, light or dark as the system is, text
/// never below 10 pt, Portuguese for Qt's own texts, dates and numbers as in Brazil.

/// Sets the program up; call once, before the first window. The colours then follow the system.
void aplicarEstilo(QApplication& application);

/// Dresses the program in the colours of a scheme, windows on show included.
void applyColours(ColourScheme scheme);

/// The font of headings: one step larger than the text.
[[nodiscard]] QFont headingFont();
