#include "controls/typing/Accents.h"

namespace {

/// Lower case, each letter without its marks.
QString bare(const QString& text) {
    QString letters = text.normalized(QString::NormalizationForm_D);
    letters.removeIf([](QChar c) { return c.isMark(); });
    return letters.toCaseFolded();
}

} // namespace

std::optional<qsizetype> beginsAlike(const QString& text, const QString& wanted) {
    const QString letters = bare(wanted);
    if (!bare(text).startsWith(letters))
        return std::nullopt;
    qsizetype end = 0;
    while (end < text.size() && bare(text.first(end)).size() < letters.size())
        ++end;
    while (end < text.size() && text[end].isMark())
        ++end;
    return end;
}
