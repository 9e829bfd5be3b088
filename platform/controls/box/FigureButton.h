#pragma once

#include <QPushButton>

/// A button that shows a figure of the day: below its caption the figure itself, large, and a note
/// on it. Pressed like any other. Read aloud, its name is all three.
class FigureButton final : public QPushButton {
    Q_OBJECT
public:
    explicit FigureButton(const QString& caption, QWidget* parent = nullptr);

    /// Either may be empty: it keeps its place.
    void setFigure(const QString& figure, const QString& note);
    [[nodiscard]] const QString& figure() const noexcept { return figure_; }
    [[nodiscard]] const QString& note() const noexcept { return note_; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] QFont figureFont() const;

    QString figure_;
    QString note_;
};
