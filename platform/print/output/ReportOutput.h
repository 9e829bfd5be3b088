#pragma once

#include "print/ReportFiles.h"

#include <QObject>

class QWidget;

/// What becomes of a report on show: paper or a file. Asks for the printer or the file's name,
/// shows a bar while it works and says what came of it; a report that isn't whole goes nowhere.
class ReportOutput final : public QObject {
    Q_OBJECT
public:
    /// `window` is what its dialogs stand before.
    ReportOutput(Relatorio& report, QWidget& window);

    /// @param page the one on show, from 1
    void print(int page);
    void savePdfFile();
    void saveXlsxFile();
    void saveCsvFile();

    void setPatience(int milliseconds) { patienceMs_ = milliseconds; }

signals:
    /// A short sentence on what came of it, "" where a message box has told; no more than that.
    void said(const QString& text);

private:
    struct FileKind;

    void save(const FileKind& kind);
    [[nodiscard]] bool refuseIncomplete(const QString& title);
    [[nodiscard]] QString askPath(const FileKind& kind);

    Relatorio& report_;
    QWidget& window_;
    QString folder_; ///< where files were last saved, with its "/"; "" leaves it to the dialog
    int patienceMs_ = 1000;
};
