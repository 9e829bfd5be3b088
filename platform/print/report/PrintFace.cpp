#include "print/report/PrintFace.h"

#include <QGuiApplication>

#include <algorithm>
#include <cmath>

namespace {

constexpr qsizetype kMostKnown = 4096; ///< texts whose widths are kept
/// Between letters that are shaped: nothing to see, but they aren't joined into one sign then.
constexpr qreal kApart = 1.0 / 64;

QFont fontOf(int dots, bool bold) {
    QFont font;
    // The family the program has on the screens it is made for, which has all digits equally wide;
    // where it is missing, the program's own.
    font.setFamilies({"DejaVu Sans", QGuiApplication::font().family()});
    font.setPixelSize(dots);
    font.setBold(bold);
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setLetterSpacing(QFont::AbsoluteSpacing, kApart);
    return font;
}

} // namespace

PrintFace::PrintFace(int dots, bool bold)
    : font(fontOf(dots, bold)), metrics(font), raw(QRawFont::fromFont(font)) {
    afterComma = widthOf(",00");
}

const PrintFace::Letter* PrintFace::letter(QChar c) const {
    if (c.unicode() >= kLatin)
        return nullptr;
    std::optional<Letter>& known = letters_[c.unicode()];
    if (!known)
        known = newLetter(c);
    return known->glyph == 0 ? nullptr : &*known;
}

PrintFace::Letter PrintFace::newLetter(QChar c) const {
    constexpr QChar softHyphen(0xAD); // is only seen where a line breaks
    Letter letter;
    if (!c.isPrint() || c == softHyphen)
        return letter;
    int count = 1;
    raw.glyphIndexesForChars(&c, 1, &letter.glyph, &count);
    QPointF advance;
    raw.advancesForGlyphIndexes(&letter.glyph, &advance, 1, QRawFont::UseDesignMetrics);
    letter.advance = std::round(advance.x());
    return letter;
}

bool PrintFace::isPlain(const QString& text) const {
    return std::ranges::all_of(text, [this](QChar c) { return letter(c) != nullptr; });
}

qreal PrintFace::widthOf(const QString& text) const {
    qreal sum = 0;
    for (const QChar c : text) {
        const Letter* const here = letter(c);
        if (!here) {
            if (const auto known = known_.constFind(text); known != known_.constEnd())
                return *known;
            if (known_.size() >= kMostKnown)
                known_.clear();
            return known_[text] = metrics.horizontalAdvance(text);
        }
        sum += here->advance;
    }
    return sum;
}

qreal PrintFace::widthOf(const QString& text, qsizetype count) const {
    const QString first = text.first(count);
    return isPlain(text) ? widthOf(first) : metrics.horizontalAdvance(first);
}
