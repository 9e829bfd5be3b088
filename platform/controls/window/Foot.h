#pragma once

#include <QFrame>

/// The foot of a window: the navigation bar at its left, the command buttons at its right, a line
/// above. In a .ui: a promoted QFrame that holds a horizontal layout with the bar, a spacer and the
/// buttons in the order new, save, delete, find, close. It makes the buttons equally wide and high.
class Foot final : public QFrame {
    Q_OBJECT
public:
    explicit Foot(QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void alignButtons();
};
