#pragma once

#include <QWidget>

#include <optional>

class PageView;
class QAction;
class QComboBox;
class QLabel;
class QLineEdit;
class QSpinBox;
class QToolBar;
class Relatorio;
enum class SearchDirection : unsigned char;
struct ReportHit;

/// A report on show, to stand inside a window: its pages below each other, a bar of tools above,
/// the count of pages below. Prints, saves, finds, zooms; all by keys too, which the tool-tips
/// name. It shows itself what goes wrong with a file; the report's own errors are its error
/// event's.
///
/// It shows the report from begin() on, from its first page. The report must outlive it.
class ReportPreview final : public QWidget {
    Q_OBJECT
public:
    explicit ReportPreview(Relatorio& report, QWidget* parent = nullptr);
    ~ReportPreview() override;

    /// The page on show, from 1; the upper one where there are two.
    [[nodiscard]] int page() const;
    void goToPage(int page);

    /// How long work goes on under the hourglass before the window with the bar and its "Cancelar"
    /// shows; a second, unless a test wants it otherwise.
    void setPatience(int milliseconds) { patienceMs_ = milliseconds; }

private:
    struct Impl;
    int patienceMs_ = 1000;
};
