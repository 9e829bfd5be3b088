#pragma once

#include "jet/Error.h"
#include "jet/page/Field.h"

#include <span>
#include <string>

namespace jet {

/// Throws Error{corrupt}: "O arquivo está danificado (página N): <reason>." The reason is a short
/// Portuguese phrase that says which structure doesn't parse.
[[noreturn]] void corrupt(PageNo page, const std::string& reason);

/// Bytes of the file that nobody has checked yet, and the page they came from.
/// Every access is bounds-checked and throws Error{corrupt} naming that page.
class ByteView {
public:
    ByteView(std::span<const std::byte> bytes, PageNo page) noexcept : bytes_(bytes), page_(page) {}

    [[nodiscard]] std::size_t size() const noexcept { return bytes_.size(); }
    [[nodiscard]] PageNo page() const noexcept { return page_; }
    [[nodiscard]] std::span<const std::byte> bytes() const noexcept { return bytes_; }

    [[nodiscard]] std::uint8_t u8(std::size_t at) const { return get<std::uint8_t>(at); }
    [[nodiscard]] std::uint16_t u16(std::size_t at) const { return get<std::uint16_t>(at); }
    [[nodiscard]] std::uint32_t u32(std::size_t at) const { return get<std::uint32_t>(at); }
    [[nodiscard]] std::int32_t i32(std::size_t at) const { return get<std::int32_t>(at); }

    template <class T>
    [[nodiscard]] T load(Field<T> field) const {
        check(field.at, field.size);
        return jet::load(bytes_.data(), field);
    }
    [[nodiscard]] std::size_t load(ShortField field) const {
        check(field.at, field.size);
        return jet::load(bytes_.data(), field);
    }

    /// `count` bytes from `at`.
    [[nodiscard]] std::span<const std::byte> sub(std::size_t at, std::size_t count) const {
        check(at, count);
        return bytes_.subspan(at, count);
    }
    /// Everything from `at` to the end.
    [[nodiscard]] std::span<const std::byte> from(std::size_t at) const {
        check(at, 0);
        return bytes_.subspan(at);
    }

private:
    template <class T>
    [[nodiscard]] T get(std::size_t at) const {
        check(at, sizeof(T));
        return jet::load<T>(bytes_.data() + at);
    }
    void check(std::size_t at, std::size_t count) const {
        if (at > bytes_.size() || count > bytes_.size() - at)
            corrupt(page_, "um valor aponta para fora da página");
    }

    std::span<const std::byte> bytes_;
    PageNo page_;
};

} // namespace jet
