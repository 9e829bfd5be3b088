#include "controls/box/ShowOnly.h"

#include <QLineEdit>

void showOnly(std::initializer_list<QLineEdit*> boxes) {
    for (QLineEdit* box : boxes) {
        box->setReadOnly(true);
        box->setFocusPolicy(Qt::ClickFocus);
        QPalette palette;
        palette.setBrush(QPalette::Base, Qt::NoBrush);
        box->setPalette(palette);
    }
}
