#pragma once

#include <QHash>
#include <QString>
#include <QWidget>

#include <functional>
#include <span>

class PageView;
class QAction;
class QLabel;
class QSpinBox;
class QToolBar;
class Relatorio;
class ReportFinder;
class ReportOutput;
class ZoomBox;

/// A report on show, to stand inside a window: a bar of tools above, its pages below each other,
/// the count of pages at the foot. Prints, saves, finds, zooms; all by keys too, which the
/// tool-tips name. It says itself what becomes of files and printing; the report's errors are told
/// by its error event, which is the window's.
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

private:
    struct Tool;
    using Work = std::function<void()>;

    [[nodiscard]] QToolBar* makeTools();
    void addTools(QToolBar& bar, std::span<const Tool> tools);
    void addKey(const QKeySequence& key, const Work& work);
    [[nodiscard]] QSpinBox* makeNumber();
    [[nodiscard]] QWidget* makeFoot();

    void focusNumber();
    void leaveNumber();
    void began();
    void showPage();
    void textChanged();
    void say(const QString& text);

    Relatorio& report_;
    PageView* view_;
    ReportOutput* output_;
    ReportFinder* find_;
    ZoomBox* zoom_;
    QHash<QString, QAction*> actions_;
    QSpinBox* number_ = nullptr;
    QLabel* pages_ = nullptr;
    QLabel* news_ = nullptr;
};
