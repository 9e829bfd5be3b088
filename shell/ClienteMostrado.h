#pragma once

#include <cstdint>
#include <optional>

/// A window that has a client on show, of whom more can be asked from outside.
class ClienteMostrado {
public:
    ClienteMostrado() = default;
    ClienteMostrado(const ClienteMostrado&) = delete;
    ClienteMostrado& operator=(const ClienteMostrado&) = delete;

    /// His `codigo`; nothing while there is none.
    [[nodiscard]] virtual std::optional<std::int64_t> clienteMostrado() const = 0;

protected:
    ~ClienteMostrado() = default;
};
