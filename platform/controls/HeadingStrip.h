#pragma once

#include <QFrame>
#include <QString>

class QLabel;

/// The strip at the top of a window: a picture and the window's heading, one step larger than text.
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

    [[nodiscard]] QString iconName() const { return iconName_; }
    /// One of the names of Icons::named().
    void setIconName(const QString& name);

protected:
    void changeEvent(QEvent* event) override;

private:
    void refresh();

    QLabel* picture_;
    QLabel* heading_;
    QString iconName_;
};
