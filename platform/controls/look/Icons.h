#pragma once

#include <QIcon>

class QWidget;

/// The program's pictures: SVG files under :/icons, drawn sharp at any size and screen density.
///
/// What a file draws in "currentColor" takes the palette's text colour at the moment of drawing,
/// fainter when disabled, and the colour of selected text on a selected row; so a picture follows a
/// change between light and dark colours by itself. Fixed colours (the program's mark) stay.
namespace Icons {

/// The picture :/icons/<name>.svg. `name` must be one of assets/assets.qrc.
[[nodiscard]] QIcon named(const QString& name);

/// Gives each button under `root` that has the dynamic property "iconName" its picture. In a .ui:
///
///     <property name="iconName" stdset="0"><string notr="true">save</string></property>
void applyTo(QWidget& root);

} // namespace Icons
