#pragma once

#include <QString>
#include <QWidget>

#include <optional>
#include <vector>

/// Figures as bars beside each other, all in one unit, on a common line. Colour alone tells
/// nothing: each bar has its words, which the mouse brings up over it and screen readers are told.
///
/// Worked like a list: the arrows, Home and End move the current bar, Enter, Space or a click on
/// its column is told by barClicked(). Bars are counted from 0.
class BarChart final : public QWidget {
    Q_OBJECT
public:
    struct Bar {
        QString label; ///< below it; left out where the labels don't have room beside each other
        QString words; ///< what it stands for, with its figure
        double height; ///< from 0 on
    };

    explicit BarChart(QWidget* parent = nullptr);

    /// The current bar stays the one in its place.
    void setBars(std::vector<Bar> bars);
    [[nodiscard]] const std::vector<Bar>& bars() const noexcept { return bars_; }
    /// -1 if there are none.
    [[nodiscard]] int currentBar() const noexcept { return current_; }
    void setCurrentBar(int bar);
    /// The whole column of a bar, from edge to edge.
    [[nodiscard]] QRect columnRect(int bar) const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

signals:
    void barClicked(int bar);
    /// Another bar is the current one, or it stands for something else; -1 for none.
    void currentBarChanged(int bar);

protected:
    bool event(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] int barAt(QPoint point) const;
    /// Every so many bars have their label shown.
    [[nodiscard]] int labelStep() const;

    std::vector<Bar> bars_;
    int current_ = -1;
    int pressed_ = -1; ///< by the mouse
};
