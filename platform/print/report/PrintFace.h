#pragma once

#include <QFont>
#include <QFontMetricsF>
#include <QHash>
#include <QRawFont>

#include <array>
#include <optional>

/// A face that reports are set in: of one size, in dots, and one weight.
class PrintFace {
public:
    struct Letter {
        quint32 glyph = 0; ///< 0: the font hasn't it
        qreal advance = 0; ///< in whole dots: a PDF is then shorter by a third
    };

    PrintFace(int dots, bool bold);
    /// Nothing if the letter can't stand by itself: it isn't Latin, or the font hasn't it.
    [[nodiscard]] const Letter* letter(QChar c) const;
    /// Whether each letter of the text can.
    [[nodiscard]] bool isPlain(const QString& text) const;
    [[nodiscard]] qreal widthOf(const QString& text) const;
    /// Of the text's first characters.
    [[nodiscard]] qreal widthOf(const QString& text, qsizetype count) const;

    QFont font;
    QFontMetricsF metrics;
    QRawFont raw;
    qreal afterComma = 0; ///< what "Standard" has there is that wide

private:
    [[nodiscard]] Letter newLetter(QChar c) const;

    static constexpr std::size_t kLatin = 0x300;
    mutable std::array<std::optional<Letter>, kLatin> letters_; ///< those met so far
    // Measuring other texts takes as long as drawing them; names come again and again.
    mutable QHash<QString, qreal> known_;
};
