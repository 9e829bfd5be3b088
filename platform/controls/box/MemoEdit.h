#pragma once

#include <QPlainTextEdit>

/// A text box of several lines, for remarks.
///
/// Enter means in it what it means in every other box of the window; Ctrl+Enter begins a new line.
/// Tab moves on. The text comes back as it was given until the operator changes it; then its lines
/// end in "\r\n", as the system that shares the file writes them.
class MemoEdit final : public QPlainTextEdit {
    Q_OBJECT
    Q_PROPERTY(QString text READ text WRITE setText)
public:
    explicit MemoEdit(QWidget* parent = nullptr);

    [[nodiscard]] QString text() const;
    /// Lines may end in "\n", "\r" or "\r\n".
    void setText(const QString& text);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    // What was given, and how the box holds it.
    QString given_;
    QString givenRaw_;
};
