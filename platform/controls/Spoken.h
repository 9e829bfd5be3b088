#pragma once

/// What a screen reader is told of the controls where Qt's own account leaves something out: names
/// are what the labels say, values what the controls hold.
///
/// A status text (a QLabel with an accessible name) has its text as its value. A drop-down
/// list keeps its name when something is chosen in it, and has its text as its value.

/// Call it before the first window is read; further calls do nothing.
void installSpoken();
