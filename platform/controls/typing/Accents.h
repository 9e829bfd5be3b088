#pragma once

#include <QString>

#include <optional>

/// Names as people look for them: without regard to case, nor to accents either way.

/// Lower case, each letter without its marks. As long as the text, if that is Portuguese.
[[nodiscard]] QString bareLetters(const QString& text);

/// Whether `text` begins like `wanted`, so compared: "marc" and "Márc" both as "Márcio" does.
/// @return how many characters of `text` that beginning is; nothing if it begins otherwise.
[[nodiscard]] std::optional<qsizetype> beginsAlike(const QString& text, const QString& wanted);
