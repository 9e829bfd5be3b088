#pragma once

#include "controls/window/MessageBox.h"

#include <QApplication>
#include <QWidget>

#include <cstdio>
#include <cstdlib>

/// For measurements that work the program's windows, on the offscreen platform.

/// The program's look, every message box answered by `answer`; what fails ends the program.
void prepareWindows(QApplication& application, const MessageFunction& answer);

/// The window, on show and active.
template <class Window>
Window& shown() {
    Window& window = Window::instance();
    window.show();
    window.activateWindow();
    while (QApplication::activeWindow() != &window)
        QApplication::processEvents();
    return window;
}

template <class Control>
Control& control(const QWidget& window, const char* name) {
    auto* found = window.findChild<Control*>(name);
    if (!found) {
        std::fprintf(stderr, "no control %s\n", name);
        std::exit(EXIT_FAILURE);
    }
    return *found;
}
