#pragma once

#include <QObject>
#include <QPoint>

class PageView;
class QMouseEvent;

/// What the mouse does on the pages of a view: dragged over a text it marks, from anywhere else, or
/// with the middle button, it takes the pages with it; a click takes the mark away.
class PageMouse final : public QObject {
    Q_OBJECT
public:
    explicit PageMouse(PageView& view);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum class Doing : unsigned char { nothing, marking, moving };

    bool pressed(const QMouseEvent& event);
    void moved(const QMouseEvent& event);
    void released();
    void showCursor(QPoint at);

    PageView& view_;
    Doing doing_ = Doing::nothing;
    QPoint from_; ///< where the button went down, or the pages were moved to since
    bool isClick_ = false;
};
