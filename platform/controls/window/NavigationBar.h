#pragma once

#include <QWidget>

#include <array>

class QToolButton;

/// Four flat buttons that walk a set of records: first, previous, next, last.
class NavigationBar final : public QWidget {
    Q_OBJECT
public:
    static constexpr int kCount = 4;

    explicit NavigationBar(QWidget* parent = nullptr);

    /// The button of index 0 (first) to 3 (last).
    [[nodiscard]] QToolButton* button(int index) const;

signals:
    /// A button was pressed and let go, or pressed by keyboard; its index, 0 to 3.
    void clicked(int index);

private:
    std::array<QToolButton*, kCount> buttons_{};
};
