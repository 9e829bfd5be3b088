#pragma once

#include <QFrame>
#include <QString>

class QLabel;

/// The strip at the top of a window: a picture and the window's heading, one step larger than text,
/// and at its right which record is on show, where the window shows one.
/// The Form takes its window icon from it. In a .ui: a promoted QFrame with the dynamic properties
/// "text" and "iconName".
class HeadingStrip final : public QFrame {
    Q_OBJECT
    Q_PROPERTY(QString text READ text WRITE setText)
    Q_PROPERTY(QString iconName READ iconName WRITE setIconName)
public:
    explicit HeadingStrip(QWidget* parent = nullptr);

    [[nodiscard]] QString text() const;
    /// Shown as it stands: plain text, "&" included.
    void setText(const QString& text);

    /// "Novo", "Lançamento 12: Maria". Cut where there is no room; then its tool-tip is the whole.
    [[nodiscard]] QString record() const { return record_; }
    void setRecord(const QString& record);

    [[nodiscard]] QString iconName() const { return iconName_; }
    /// One of the names of Icons::named().
    void setIconName(const QString& name);

protected:
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void refresh();
    void showRecord();

    QLabel* picture_;
    QLabel* heading_;
    QLabel* shown_; ///< the record, as much of it as there is room for
    QString record_;
    QString iconName_;
};
