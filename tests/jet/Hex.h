#pragma once

#include "jet/Types.h"

#include <string>

/// Bytes as text: "7f0100".
inline std::string hex(const jet::Bytes& bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const std::byte byte : bytes) {
        text += kDigits[std::to_integer<unsigned>(byte) >> 4];
        text += kDigits[std::to_integer<unsigned>(byte) & 0xF];
    }
    return text;
}
