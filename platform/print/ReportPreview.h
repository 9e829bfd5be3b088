#pragma once

#include <QHash>
#include <QString>
#include <QWidget>

#include <span>

class PageView;
class QAction;
class QComboBox;
class QLabel;
class QLineEdit;
class QSpinBox;
class QToolBar;
class Relatorio;
enum class SearchDirection : unsigned char;

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
    void setPatience(int milliseconds) { patienceMs_ = milliseconds; }

signals:
    /// The operator wants the failed report to be begun again.
    void againAsked();

private:
    struct FileKind;
    struct Tool;

    [[nodiscard]] QToolBar* makeTools();
    void addTools(QToolBar& bar, std::span<const Tool> tools);
    void addKey(const QKeySequence& key, void (ReportPreview::*handler)());
    [[nodiscard]] QSpinBox* makeNumber();
    [[nodiscard]] QComboBox* makeZoom();
    [[nodiscard]] QLineEdit* makeFind();
    [[nodiscard]] QWidget* makeFailure();
    [[nodiscard]] QWidget* makeFoot();

    void print();
    void savePdfFile();
    void saveXlsxFile();
    void saveCsvFile();
    void save(const FileKind& kind);
    [[nodiscard]] bool refuseIncomplete(const QString& title);
    [[nodiscard]] QString askPath(const FileKind& kind);

    void firstPage();
    void previousPage();
    void nextPage();
    void lastPage();
    void focusNumber();
    void leaveNumber();

    void zoomIn();
    void zoomOut();
    void zoomStep(int steps);
    void zoomFull();
    void zoomWidth();
    void zoomPage();
    void zoomChosen(int index);

    void focusFind();
    void findNext();
    void findPrevious();
    void find(SearchDirection direction);
    void textChanged();
    void leaveFind();

    void began();
    void showPage();
    void showState();
    void askAgain();
    void showZoom();
    void say(const QString& text);

    Relatorio& report_;
    PageView* view_;
    QHash<QString, QAction*> actions_;
    QSpinBox* number_ = nullptr;
    QComboBox* zoom_ = nullptr;
    QLineEdit* find_ = nullptr;
    QWidget* failure_ = nullptr;
    QLabel* failed_ = nullptr; ///< in failure_
    QLabel* pages_ = nullptr;
    QLabel* news_ = nullptr;
    QString folder_; ///< where files were last saved
    int patienceMs_ = 1000;
};
