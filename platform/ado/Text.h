#pragma once

#include <concepts>
#include <string>
#include <string_view>
#include <utility>

namespace ado {

/// Text handed to this layer: UTF-8, or anything that can turn itself into it (a QString).
/// Converts silently, so that windows write names and criteria as they have them.
class Text {
public:
    Text(const char* utf8) : utf8_(utf8) {}
    Text(std::string utf8) : utf8_(std::move(utf8)) {}
    Text(std::string_view utf8) : utf8_(utf8) {}
    template <class Other>
    requires requires(const Other& other) {
        { other.toStdString() } -> std::same_as<std::string>;
    }
    Text(const Other& other) : utf8_(other.toStdString()) {}

    [[nodiscard]] const std::string& utf8() const noexcept { return utf8_; }

private:
    std::string utf8_;
};

} // namespace ado
