#include "controls/typing/Accents.h"

QString bareLetters(const QString& text) {
    QString letters = text.normalized(QString::NormalizationForm_D);
    letters.removeIf([](QChar c) { return c.isMark(); });
    return letters.toCaseFolded();
}

std::optional<qsizetype> beginsAlike(const QString& text, const QString& wanted) {
    const QString letters = bareLetters(wanted);
    if (!bareLetters(text).startsWith(letters))
        return std::nullopt;
    qsizetype end = 0;
    while (end < text.size() && bareLetters(text.first(end)).size() < letters.size())
        ++end;
    while (end < text.size() && text[end].isMark())
        ++end;
    return end;
}
