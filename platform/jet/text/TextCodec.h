#pragma once

#include "jet/Types.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace jet {

class CodePage;

/// The text of a column, between the bytes of the file and UTF-8.
///
/// Jet 3 stores bytes of a code page, Jet 4 UTF-16, plain or compressed to one byte a character.
/// Whatever the file holds comes back unchanged when it is written again: bytes that the code page
/// leaves undefined (see CodePage) and lone halves of surrogate pairs (three UTF-8 bytes) included.
/// A small value without state of its own: copy it freely.
class TextCodec {
public:
    /// `codePage` is that of a Jet 3 column; Jet 4 has none.
    /// @throws Error{unsupported} if this engine doesn't know the code page.
    explicit TextCodec(Version version, std::uint16_t codePage = 1252);

    [[nodiscard]] Version version() const noexcept { return version_; }

    /// The UTF-8 of stored bytes.
    /// @throws Error{corrupt} if Jet 4 text ends inside a character; Jet 3 text always reads.
    [[nodiscard]] std::string decode(std::span<const std::byte> stored) const;
    /// The same into a string that is already there, whose memory is used again.
    void decodeTo(std::string& text, std::span<const std::byte> stored) const;

    /// The bytes to store. Jet 4 compresses if the column may, and only what the format wants
    /// compressed: 3 or more characters (in a memo up to 1024), each from U+0001 to U+00FF.
    /// @throws Error{outOfRange} if `text` isn't UTF-8, has a character that the code page lacks,
    /// or, in Jet 4, begins with U+FEFF (it would be read back as the mark of compressed text).
    [[nodiscard]] Bytes encode(std::string_view text, bool mayCompress, bool isMemo) const;

    /// What the declared width of a column counts: bytes in Jet 3, UTF-16 units in Jet 4.
    /// @throws Error{outOfRange} as encode() does.
    [[nodiscard]] std::size_t characters(std::string_view text) const;

    /// What a sort order works on, into `units` as far as they have room: the stored bytes in
    /// Jet 3, UTF-16 units in Jet 4. Returns how many there are now.
    /// @throws Error{corrupt} as decode() and Error{outOfRange} as encode() for the part that is
    /// looked at.
    [[nodiscard]] std::size_t unitsOf(std::span<const std::byte> stored,
                                      std::span<char16_t> units) const;
    [[nodiscard]] std::size_t unitsOf(std::string_view text, std::span<char16_t> units) const;

private:
    template <class Sink>
    void eachUnit(std::string_view text, Sink&& sink) const;

    Version version_;
    const CodePage* page_; ///< null in Jet 4
};

} // namespace jet
