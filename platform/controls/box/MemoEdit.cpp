#include "controls/box/MemoEdit.h"

#include "controls/typing/Typing.h"

#include <QKeyEvent>
#include <QTextDocument>

MemoEdit::MemoEdit(QWidget* parent) : QPlainTextEdit(parent) { setTabChangesFocus(true); }

// The raw text: the plain one has ordinary blanks for those that hold two words together.
QString MemoEdit::text() const {
    QString text = document()->toRawText();
    if (text == givenRaw_)
        return given_;
    return text.replace(QChar::ParagraphSeparator, "\r\n").replace(QChar::LineSeparator, "\r\n");
}

void MemoEdit::setText(const QString& text) {
    setPlainText(text);
    given_ = text;
    givenRaw_ = document()->toRawText();
}

void MemoEdit::keyPressEvent(QKeyEvent* event) {
    if (!isEnter(*event))
        return QPlainTextEdit::keyPressEvent(event);
    if (!(event->modifiers() & Qt::ControlModifier))
        return event->ignore();
    insertPlainText("\n");
    ensureCursorVisible();
}

#include "controls/box/moc_MemoEdit.cpp"
