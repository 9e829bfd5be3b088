#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace jet::sys {

/// What the operating system knows of a code page of one or two bytes a character.
class PageConverter {
public:
    explicit PageConverter(std::uint16_t page);
    PageConverter(const PageConverter&) = delete;
    PageConverter& operator=(const PageConverter&) = delete;
    ~PageConverter();
    /// Whether it knows the page at all; nothing else may be asked otherwise.
    [[nodiscard]] bool works() const noexcept;

    /// The character that all of these bytes are, if they are one.
    [[nodiscard]] std::optional<char16_t> characterOf(const std::string& bytes);
    /// Its bytes; a lone one stands second.
    [[nodiscard]] std::optional<std::array<unsigned char, 2>> bytesOf(char16_t character);

private:
    struct Handles; ///< as the system has them
    std::unique_ptr<Handles> handles_;
};

} // namespace jet::sys
