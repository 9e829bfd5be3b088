#pragma once

#include "print/PageView.h"

#include <QComboBox>

/// How large the pages stand on the screen, to be chosen from a list: a whole page, its width, or
/// per cent of its size on paper. Shows what they have, whoever changed it.
class ZoomBox final : public QComboBox {
    Q_OBJECT
public:
    explicit ZoomBox(PageView& view, QWidget* parent = nullptr);

    /// To the next larger size of the list, or, below 0, the next smaller.
    void step(int steps);

private:
    void choose(int index);
    void showZoom();

    PageView& view_;
};
