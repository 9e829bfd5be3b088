#pragma once

#include <initializer_list>

class QLineEdit;

/// For boxes that show what nobody types: without the ground of an entry field, passed over by Tab,
/// their text still there to be copied with the mouse.
void showOnly(std::initializer_list<QLineEdit*> boxes);
