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
    void check(std::size_t at, std::size_t count) const {
        if (at > bytes_.size() || count > bytes_.size() - at)
            corrupt(page_, "um valor aponta para fora da página");
    }

    std::span<const std::byte> bytes_;
    PageNo page_;
};

} // namespace jet
