#include "jet/text/TextCodec.h"

#include "jet/Error.h"
#include "jet/Utf8.h"
#include "jet/text/CodePage.h"
#include "jet/value/LittleEndian.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace jet {

namespace {

constexpr std::byte kCompressedMark[] = {std::byte{0xFF}, std::byte{0xFE}};
constexpr char16_t kByteOrderMark = 0xFEFF;
constexpr std::size_t kLongestCompressedMemo = 1024;

bool isCompressed(std::span<const std::byte> stored) noexcept {
    return stored.size() >= 2 && stored[0] == kCompressedMark[0] && stored[1] == kCompressedMark[1];
}

[[noreturn]] void endsInsideCharacter() {
    throw Error(Errc::corrupt, "Um texto do banco de dados está danificado: termina no meio de um "
                               "caractere.");
}

[[noreturn]] void notInCodePage(char32_t codePoint, std::uint16_t codePage) {
    std::string character;
    appendUtf8(character, codePoint);
    std::array<char, 16> hex{};
    std::snprintf(hex.data(), hex.size(), "U+%04X", static_cast<unsigned>(codePoint));
    throw Error(Errc::outOfRange, "O caractere \"" + character + "\" (" + hex.data() +
                                      ") não pode ser gravado neste banco de dados: não existe na "
                                      "página de código " +
                                      std::to_string(codePage) + ".");
}

char16_t unitAt(std::span<const std::byte> bytes, std::size_t at) noexcept {
    return load<char16_t>(bytes.data() + at);
}

/// The UTF-16 units of Jet 4 text, in order, until `sink` returns false.
template <class Sink>
void eachStoredUnit(std::span<const std::byte> stored, Sink&& sink) {
    if (!isCompressed(stored)) {
        for (std::size_t i = 0; i + 1 < stored.size(); i += 2)
            if (!sink(unitAt(stored, i)))
                return;
        if (stored.size() % 2 != 0)
            endsInsideCharacter();
        return;
    }
    // After the mark each byte is a character; a zero byte switches to plain units and back.
    bool plain = false;
    for (std::size_t i = 2; i < stored.size();) {
        const auto byte = std::to_integer<char16_t>(stored[i]);
        if (byte == 0) {
            plain = !plain;
            ++i;
        } else if (!plain) {
            if (!sink(byte))
                return;
            ++i;
        } else {
            if (i + 1 == stored.size())
                endsInsideCharacter();
            if (!sink(unitAt(stored, i)))
                return;
            i += 2;
        }
    }
}

/// Characters up to U+00FF, one a byte, into UTF-8: each beyond ASCII becomes two bytes.
void widenLatin(std::string& text) {
    std::size_t from = text.size();
    const auto isWide = [](char c) { return static_cast<unsigned char>(c) >= 0x80; };
    std::size_t to = from + static_cast<std::size_t>(std::ranges::count_if(text, isWide));
    text.resize(to);
    while (to != from) { // from the end on, so that nothing is written over before it is read
        const auto character = static_cast<unsigned char>(text[--from]);
        if (character < 0x80) {
            text[--to] = static_cast<char>(character);
        } else {
            text[--to] = static_cast<char>(0x80U | (character & 0x3FU));
            text[--to] = static_cast<char>(0xC0U | (character >> 6));
        }
    }
}

/// Nearly all text of a Brazilian shop has no character beyond U+00FF: true if this hasn't, and is
/// in `text` now.
bool decodedLatin(std::string& text, std::span<const std::byte> stored) {
    unsigned all = 0; // the bits that any of the characters has
    if (isCompressed(stored)) {
        const auto bytes = stored.subspan(2);
        text.resize(bytes.size());
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            const auto byte = std::to_integer<unsigned>(bytes[i]);
            all |= byte == 0 ? ~0U : byte; // zero is the switch to plain units
            text[i] = static_cast<char>(byte);
        }
    } else {
        if (stored.size() % 2 != 0)
            return false;
        text.resize(stored.size() / 2);
        for (std::size_t i = 0; i < text.size(); ++i) {
            const unsigned unit = unitAt(stored, 2 * i);
            all |= unit;
            text[i] = static_cast<char>(unit);
        }
    }
    if (all > 0xFF)
        return false;
    if (all > 0x7F)
        widenLatin(text);
    return true;
}

} // namespace

TextCodec::TextCodec(Version version, std::uint16_t codePage)
    : version_(version), page_(version == Version::jet3 ? &CodePage::of(codePage) : nullptr) {}

std::string TextCodec::decode(std::span<const std::byte> stored) const {
    std::string text;
    decodeTo(text, stored);
    return text;
}

void TextCodec::decodeTo(std::string& text, std::span<const std::byte> stored) const {
    if (version_ == Version::jet3) {
        text.clear();
        text.reserve(stored.size());
        return page_->appendText(text, stored);
    }
    if (decodedLatin(text, stored))
        return;
    text.clear();
    char16_t high = 0; // the first half of a pair, kept until the unit after it is known
    eachStoredUnit(stored, [&](char16_t unit) {
        if (high != 0) {
            const char16_t first = high;
            high = 0;
            if (isLowSurrogate(unit)) {
                appendUtf8(text, joined(first, unit));
                return true;
            }
            appendUtf8(text, first);
        }
        if (isHighSurrogate(unit))
            high = unit;
        else
            appendUtf8(text, unit);
        return true;
    });
    if (high != 0)
        appendUtf8(text, high);
}

/// The units of `text` as unitsOf() explains them, in order, until `sink` returns false.
template <class Sink>
void TextCodec::eachUnit(std::string_view text, Sink&& sink) const {
    for (std::size_t i = 0; i < text.size();) {
        const Utf8Character character = utf8At(text, i);
        if (character.length == 0)
            throw Error(Errc::outOfRange, "O texto a gravar não é UTF-8 válido (posição " +
                                              std::to_string(i + 1) + ").");
        i += character.length;
        const char32_t codePoint = character.codePoint;
        const auto put = [&](auto unit) { return sink(static_cast<char16_t>(unit)); };
        if (version_ == Version::jet3) {
            const int bytes = page_->bytesOf(codePoint);
            if (bytes < 0)
                notInCodePage(codePoint, page_->number());
            if (bytes > 0xFF && !put(bytes >> 8))
                return;
            if (!put(bytes & 0xFF))
                return;
        } else if (codePoint < 0x10000) {
            if (!put(codePoint))
                return;
        } else if (!put(highHalf(codePoint)) || !put(lowHalf(codePoint))) {
            return;
        }
    }
}

Bytes TextCodec::encode(std::string_view text, bool mayCompress, bool isMemo) const {
    std::u16string units;
    units.reserve(text.size());
    eachUnit(text, [&](char16_t unit) {
        units.push_back(unit);
        return true;
    });
    Bytes stored;
    const auto putLowBytes = [&] {
        for (const char16_t unit : units)
            stored.push_back(static_cast<std::byte>(unit));
    };
    if (version_ == Version::jet3) {
        stored.reserve(units.size());
        putLowBytes();
        return stored;
    }
    if (!units.empty() && units.front() == kByteOrderMark)
        throw Error(Errc::outOfRange, "O texto a gravar começa com o caractere invisível U+FEFF, "
                                      "que não pode ser gravado neste lugar.");
    const bool compress =
        mayCompress && units.size() > 2 && (!isMemo || units.size() <= kLongestCompressedMemo) &&
        std::ranges::all_of(units, [](char16_t unit) { return unit >= 1 && unit <= 0xFF; });
    if (compress) {
        stored.reserve(units.size() + 2);
        stored.assign(std::begin(kCompressedMark), std::end(kCompressedMark));
        putLowBytes();
    } else {
        stored.resize(units.size() * 2);
        for (std::size_t i = 0; i < units.size(); ++i)
            store<char16_t>(stored.data() + 2 * i, units[i]);
    }
    return stored;
}

std::size_t TextCodec::characters(std::string_view text) const {
    std::size_t count = 0;
    eachUnit(text, [&](char16_t) {
        ++count;
        return true;
    });
    return count;
}

std::size_t TextCodec::unitsOf(std::span<const std::byte> stored, std::span<char16_t> units) const {
    std::size_t count = 0;
    if (version_ == Version::jet3) {
        count = std::min(stored.size(), units.size());
        std::ranges::transform(stored.first(count), units.begin(),
                               [](std::byte byte) { return std::to_integer<char16_t>(byte); });
        return count;
    }
    eachStoredUnit(stored, [&](char16_t unit) {
        if (count == units.size())
            return false;
        units[count++] = unit;
        return true;
    });
    return count;
}

std::size_t TextCodec::unitsOf(std::string_view text, std::span<char16_t> units) const {
    std::size_t count = 0;
    eachUnit(text, [&](char16_t unit) {
        if (count == units.size())
            return false;
        units[count++] = unit;
        return true;
    });
    return count;
}

} // namespace jet
