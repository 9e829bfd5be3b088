#pragma once

#include <exception>
#include <utility>

namespace ado {

/// Where an exception waits that was thrown inside a callback of SQLite, which is C and lets none
/// through: it is thrown again when SQLite has returned.
class Trap {
public:
    /// Runs `body`; false if it threw.
    template <class Body>
    bool run(Body&& body) noexcept {
        try {
            body();
            return true;
        } catch (...) {
            caught_ = std::current_exception();
            return false;
        }
    }
    void rethrow() {
        if (caught_)
            std::rethrow_exception(std::exchange(caught_, nullptr));
    }

private:
    std::exception_ptr caught_;
};

} // namespace ado
