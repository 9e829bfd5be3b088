#pragma once

#include <QString>
#include <QWidget>

class FocusReturn;
class PageView;
class QLabel;
class QSpinBox;
class Relatorio;
class ReportFinder;
class ReportOutput;
class ToolStrip;
class ZoomBox;

/// A report on show, to stand inside a window: tools above, in as many rows as the width needs, its
/// pages below each other, the count of pages at the foot. Prints, saves, finds, zooms, copies; all
/// by keys too, which the tool-tips name. It says itself what becomes of files and printing; the
/// report's errors are told by its error event, which is the window's.
///
/// It shows the report from begin() on, from its first page. The report must outlive it. While it
/// works for more than a moment a window with a bar keeps the operator from everything else.
///
/// When the rows of a report stop coming half-way, a notice over the pages says so and offers to
/// try again; what is there is neither printed nor saved.
class ReportPreview final : public QWidget {
    Q_OBJECT
public:
    explicit ReportPreview(Relatorio& report, QWidget* parent = nullptr);

    /// The page on show, from 1.
    [[nodiscard]] int page() const;
    void goToPage(int page);

    /// How long work goes on under the hourglass before the window with the bar shows; a second,
    /// unless a test wants it otherwise.
    void setPatience(int milliseconds);

signals:
    /// The operator wants the failed report to be begun again.
    void againAsked();
    /// The operator wants the report closed.
    void closeAsked();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void addTools();
    void addWindowKeys();
    [[nodiscard]] QSpinBox* makeNumber();
    [[nodiscard]] QWidget* makeFoot();

    void goToEnd();
    void copy();
    [[nodiscard]] bool takeAll();

    void focusNumber();
    void began();
    void showPage();
    void showSteps();
    void textChanged();
    void say(const QString& text);

    Relatorio& report_;
    PageView* view_;
    ReportOutput* output_;
    ToolStrip* tools_;
    FocusReturn* focus_;
    ReportFinder* find_ = nullptr;
    ZoomBox* zoom_ = nullptr;
    QSpinBox* number_ = nullptr;
    QLabel* pages_ = nullptr;
    QLabel* news_ = nullptr;
    int patienceMs_ = 1000;
};
